#pragma once

#include "platform/DictionaryKeys.h"

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class PropertyList;

// String keys to property-list values. Keeps the order in which keys were first set, for readers and
// writers; equality ignores it. Look-up stays constant time however many keys there are.
class Dictionary {
public:
    struct Member; // { std::string key; PropertyList value; }, in PropertyList.h
    struct Entry;  // { const std::string& key; const PropertyList& value; }, of a dictionary that outlives it
    class Iterator;

    Dictionary();
    Dictionary(std::initializer_list<Member> members); // of a key given twice, the last value at the first place
    Dictionary(DictionaryKeys keys, std::vector<PropertyList> values); // a value for each key
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

    Iterator begin() const;
    Iterator end() const;

    bool operator==(const Dictionary& other) const;

private:
    DictionaryKeys _keys;
    std::vector<PropertyList> _values; // of the keys, in their order
};

} // namespace platform
