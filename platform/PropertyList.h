#pragma once

#include "platform/Data.h"
#include "platform/Dictionary.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace platform {

// Seconds since 2001-01-01 00:00:00 UTC, the reference date of property lists. A date that is no number equals itself.
struct Date {
    double secondsSinceReferenceDate = 0;
    bool operator==(const Date& other) const;
};

// What an object of a keyed archive has in place of another object: its index in the archive's table.
struct UID {
    std::uint64_t index = 0;
    bool operator==(const UID&) const = default;
};

using Array = std::vector<PropertyList>;

// A property-list value. Readers never fail: a value of another type reads as absent, false or 0, and
// booleans, integers and reals are all numbers, read by value (true is 1).
class PropertyList {
public:
// gcc 12 takes a scoped enumerator for a shadow of the type alias of that name.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wshadow"
    // Unsigned is an integer from 2^63 on; every smaller one is an Integer.
    enum class Type { Boolean, Integer, Unsigned, Real, String, Date, Data, UID, Array, Dictionary };
#pragma GCC diagnostic pop

    PropertyList() : _value(Dictionary()) { }
    PropertyList(bool value) : _value(value) { }
    template <class T>
        requires(std::is_integral_v<T> && !std::is_same_v<T, bool>)
    PropertyList(T value) : _value(static_cast<std::int64_t>(value))
    {
        if (std::is_unsigned_v<T> && static_cast<std::int64_t>(value) < 0)
            _value = static_cast<std::uint64_t>(value);
    }
    PropertyList(double value) : _value(value) { }
    PropertyList(std::string value) : _value(std::move(value)) { }
    PropertyList(std::string_view value) : _value(std::string(value)) { }
    PropertyList(const char* value) : _value(std::string(value)) { }
    PropertyList(Date value) : _value(value) { }
    PropertyList(Data value) : _value(std::move(value)) { }
    PropertyList(UID value) : _value(value) { }
    PropertyList(Array value) : _value(std::move(value)) { }
    PropertyList(Dictionary value) : _value(std::move(value)) { }

    Type type() const { return static_cast<Type>(_value.index()); }
    bool isNumber() const { return type() <= Type::Real; }

    // Numbers by value, everything else false or 0. A real is cut towards zero; what the range of the result lacks is
    // held at its end, and not-a-number is 0.
    bool boolValue() const;
    std::int64_t integerValue() const;
    double realValue() const;

    // The content if the type is the named one, otherwise null.
    const std::uint64_t* unsignedInteger() const { return std::get_if<std::uint64_t>(&_value); }
    const std::string* string() const { return std::get_if<std::string>(&_value); }
    const Date* date() const { return std::get_if<Date>(&_value); }
    const Data* data() const { return std::get_if<Data>(&_value); }
    const UID* uid() const { return std::get_if<UID>(&_value); }
    const Array* array() const { return std::get_if<Array>(&_value); }
    const Dictionary* dictionary() const { return std::get_if<Dictionary>(&_value); }
    Array* array() { return std::get_if<Array>(&_value); }
    Dictionary* dictionary() { return std::get_if<Dictionary>(&_value); }

    // Deep equality: dictionaries whatever their order, arrays in order, numbers by numeric value.
    bool operator==(const PropertyList& other) const;

private:
    // The order of the alternatives is that of Type.
    std::variant<bool, std::int64_t, std::uint64_t, double, std::string, Date, Data, UID, Array, Dictionary> _value;
};

struct Dictionary::Member {
    std::string key;
    PropertyList value;
};

struct Dictionary::Entry {
    const std::string& key;
    const PropertyList& value;
};

// Of a dictionary that stays as it is meanwhile.
class Dictionary::Iterator {
public:
    using difference_type = std::ptrdiff_t;
    using value_type = Entry;

    Iterator() = default;
    Iterator(const Dictionary& dictionary, std::size_t place) : _dictionary(&dictionary), _place(place) { }

    Entry operator*() const { return {_dictionary->_keys[_place], _dictionary->_values[_place]}; }
    Iterator& operator++()
    {
        ++_place;
        return *this;
    }
    Iterator operator++(int)
    {
        const Iterator before = *this;
        ++_place;
        return before;
    }
    bool operator==(const Iterator&) const = default;

private:
    const Dictionary* _dictionary = nullptr;
    std::size_t _place = 0;
};

inline Dictionary::Iterator Dictionary::begin() const
{
    return {*this, 0};
}

inline Dictionary::Iterator Dictionary::end() const
{
    return {*this, _values.size()};
}

} // namespace platform
