#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace platform {

class PropertyList;

// String keys to property-list values. Keeps the order in which keys were first set, for readers and
// writers; equality ignores it. Look-up stays constant time however many keys there are.
class Dictionary {
public:
    struct Entry; // { std::string key; PropertyList value; }, in PropertyList.h

    Dictionary();
    Dictionary(std::initializer_list<Entry> entries);
    explicit Dictionary(std::vector<Entry> entries); // of a key given twice, the last value at the first place
    // Of entries whose keys are known to be distinct.
    static Dictionary ofDistinct(std::vector<Entry> entries);
    Dictionary(const Dictionary& other);
    Dictionary(Dictionary&& other) noexcept;
    Dictionary& operator=(const Dictionary& other);
    Dictionary& operator=(Dictionary&& other) noexcept;
    ~Dictionary();

    std::size_t size() const;
    bool empty() const { return size() == 0; }

    // Null when the key is absent.
    const PropertyList* find(std::string_view key) const;
    PropertyList* find(std::string_view key);
    bool contains(std::string_view key) const { return find(key) != nullptr; }

    // Replaces the value in place when the key is present, otherwise appends.
    void set(std::string_view key, PropertyList value);
    void remove(std::string_view key);

    // Typed readers with the defaults of a missing or wrong value: false, 0, null.
    bool boolForKey(std::string_view key) const;
    std::int64_t integerForKey(std::string_view key) const;
    const std::string* stringForKey(std::string_view key) const;
    const std::vector<PropertyList>* arrayForKey(std::string_view key) const;
    const Dictionary* dictionaryForKey(std::string_view key) const;

    const Entry* begin() const;
    const Entry* end() const;

    bool operator==(const Dictionary& other) const;

private:
    std::size_t indexOf(std::string_view key) const; // size() when absent
    void reindex();

    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
    };
    using Index = std::unordered_map<std::string, std::size_t, Hash, std::equal_to<>>;

    std::vector<Entry> _entries;
    std::unique_ptr<Index> _index; // made only when there are too many entries to look through
};

} // namespace platform
