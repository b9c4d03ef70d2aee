#include "platform/Dictionary.h"

#include "platform/PropertyList.h"

#include <algorithm>
#include <utility>

namespace platform {

namespace {

// Up to here, comparing a few short keys is faster than hashing one.
constexpr std::size_t largestUnindexedSize = 32;

} // namespace

Dictionary::Dictionary() = default;
Dictionary::Dictionary(Dictionary&& other) noexcept = default;
Dictionary& Dictionary::operator=(Dictionary&& other) noexcept = default;
Dictionary::~Dictionary() = default;

Dictionary::Dictionary(std::initializer_list<Entry> entries)
{
    _entries.reserve(entries.size());
    for (const Entry& entry : entries)
        set(entry.key, entry.value);
}

Dictionary::Dictionary(std::vector<Entry> entries) : _entries(std::move(entries))
{
    reindex();
    const auto begin = _entries.begin();
    bool isRepeated = _index && _index->size() < _entries.size();
    for (auto entry = begin; !_index && !isRepeated && entry != _entries.end(); ++entry)
        isRepeated = std::any_of(begin, entry, [&](const Entry& earlier) { return earlier.key == entry->key; });
    if (!isRepeated)
        return;
    const auto all = std::exchange(_entries, {});
    _index.reset();
    for (const Entry& entry : all)
        set(entry.key, entry.value);
}

Dictionary Dictionary::ofDistinct(std::vector<Entry> entries)
{
    Dictionary dictionary;
    dictionary._entries = std::move(entries);
    dictionary.reindex();
    return dictionary;
}

Dictionary::Dictionary(const Dictionary& other) : _entries(other._entries)
{
    reindex();
}

Dictionary& Dictionary::operator=(const Dictionary& other)
{
    if (this != &other)
        *this = Dictionary(other);
    return *this;
}

std::size_t Dictionary::size() const
{
    return _entries.size();
}

const Dictionary::Entry* Dictionary::begin() const
{
    return _entries.data();
}

const Dictionary::Entry* Dictionary::end() const
{
    return _entries.data() + _entries.size();
}

std::size_t Dictionary::indexOf(std::string_view key) const
{
    if (_index) {
        const auto found = _index->find(key);
        return found == _index->end() ? _entries.size() : found->second;
    }
    const auto found = std::ranges::find(_entries, key, &Entry::key);
    return static_cast<std::size_t>(found - _entries.begin());
}

void Dictionary::reindex()
{
    _index.reset();
    if (_entries.size() <= largestUnindexedSize)
        return;
    _index = std::make_unique<Index>();
    _index->reserve(_entries.size());
    for (std::size_t i = 0; i < _entries.size(); ++i)
        _index->emplace(_entries[i].key, i);
}

const PropertyList* Dictionary::find(std::string_view key) const
{
    const std::size_t index = indexOf(key);
    return index < _entries.size() ? &_entries[index].value : nullptr;
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
    _entries.push_back({std::string(key), std::move(value)});
    if (_index)
        _index->emplace(_entries.back().key, _entries.size() - 1);
    else
        reindex();
}

void Dictionary::remove(std::string_view key)
{
    const std::size_t index = indexOf(key);
    if (index == _entries.size())
        return;
    _entries.erase(_entries.begin() + static_cast<std::ptrdiff_t>(index));
    reindex();
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
    if (size() != other.size())
        return false;
    return std::ranges::all_of(_entries, [&](const Entry& entry) {
        const PropertyList* value = other.find(entry.key);
        return value && entry.value == *value;
    });
}

} // namespace platform
