#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

// The keys of a dictionary in their order. Copies share them, so that a list of many equal dictionaries holds its keys
// once; what changes them makes own ones first. Looking one up takes constant time however many there are. As safe in
// several threads as a text.
class DictionaryKeys {
public:
    DictionaryKeys() = default;
    explicit DictionaryKeys(std::vector<std::string> keys); // each of them once
    DictionaryKeys(const DictionaryKeys& other);
    DictionaryKeys(DictionaryKeys&& other) noexcept;
    DictionaryKeys& operator=(DictionaryKeys other) noexcept;
    ~DictionaryKeys();

    std::size_t size() const;
    const std::string& operator[](std::size_t place) const;
    std::size_t find(std::string_view key) const; // its place, size() when there is none

    void append(std::string_view key); // one that is not there
    void remove(std::size_t place);

    bool isSharedWith(const DictionaryKeys& other) const { return _shared == other._shared; }

private:
    struct Shared;
    Shared& own();

    // A single pointer keeps a value of a property list small: millions of them are mostly memory.
    Shared* _shared = nullptr; // null when there are no keys
};

} // namespace platform
