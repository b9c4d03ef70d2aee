#include "platform/Dictionary.h"

#include "platform/PropertyList.h"

#include <utility>

namespace platform {

Dictionary::Dictionary() = default;
Dictionary::Dictionary(const Dictionary& other) = default;
Dictionary::Dictionary(Dictionary&& other) noexcept = default;
Dictionary::~Dictionary() = default;

// The other one may be a part of this one, which goes with what this one held.
Dictionary& Dictionary::operator=(const Dictionary& other)
{
    return *this = Dictionary(other);
}

Dictionary& Dictionary::operator=(Dictionary&& other) noexcept
{
    Dictionary taken(std::move(other));
    std::swap(_keys, taken._keys);
    std::swap(_values, taken._values);
    return *this;
}

Dictionary::Dictionary(std::initializer_list<Member> members)
{
    _values.reserve(members.size());
    for (const Member& member : members)
        set(member.key, member.value);
}

Dictionary::Dictionary(DictionaryKeys keys, std::vector<PropertyList> values)
    : _keys(std::move(keys)),
      _values(std::move(values))
{
}

std::size_t Dictionary::size() const
{
    return _values.size();
}

const PropertyList* Dictionary::find(std::string_view key) const
{
    const std::size_t place = _keys.find(key);
    return place < _values.size() ? &_values[place] : nullptr;
}

PropertyList* Dictionary::find(std::string_view key)
{
    return const_cast<PropertyList*>(std::as_const(*this).find(key));
}

void Dictionary::set(std::string_view key, PropertyList value)
{
    if (PropertyList* present = find(key)) {
        *present = std::move(value);
        return;
    }
    _values.push_back(std::move(value));
    _keys.append(key);
}

void Dictionary::remove(std::string_view key)
{
    const std::size_t place = _keys.find(key);
    if (place == _values.size())
        return;
    _values.erase(_values.begin() + static_cast<std::ptrdiff_t>(place));
    _keys.remove(place);
}

bool Dictionary::boolForKey(std::string_view key) const
{
    const PropertyList* value = find(key);
    return value && value->boolValue();
}

std::int64_t Dictionary::integerForKey(std::string_view key) const
{
    const PropertyList* value = find(key);
    return value ? value->integerValue() : 0;
}

const std::string* Dictionary::stringForKey(std::string_view key) const
{
    const PropertyList* value = find(key);
    return value ? value->string() : nullptr;
}

const std::vector<PropertyList>* Dictionary::arrayForKey(std::string_view key) const
{
    const PropertyList* value = find(key);
    return value ? value->array() : nullptr;
}

const Dictionary* Dictionary::dictionaryForKey(std::string_view key) const
{
    const PropertyList* value = find(key);
    return value ? value->dictionary() : nullptr;
}

bool Dictionary::operator==(const Dictionary& other) const
{
    if (_keys.isSharedWith(other._keys))
        return _values == other._values;
    if (size() != other.size())
        return false;
    for (std::size_t i = 0; i < size(); ++i) {
        const PropertyList* value = other.find(_keys[i]);
        if (!value || _values[i] != *value)
            return false;
    }
    return true;
}

} // namespace platform
