#include "platform/linux/system/propertylists/BinaryWriter.h"

#include "platform/linux/system/propertylists/BinaryFormat.h"
#include "platform/linux/system/propertylists/Limits.h"
#include "platform/Unicode.h"

#include <algorithm>
#include <bit>

namespace platform {

namespace {

void appendBigEndian(Data& bytes, std::uint64_t value, std::size_t size)
{
    while (size-- > 0)
        bytes.push_back(static_cast<std::uint8_t>(value >> (8 * size)));
}

// The smallest of the widths that readers know.
std::size_t widthOf(std::uint64_t largest)
{
    if (largest <= 0xFF)
        return 1;
    if (largest <= 0xFFFF)
        return 2;
    return largest <= 0xFFFFFFFF ? 4 : 8;
}

std::uint8_t markerByte(unsigned marker, std::size_t low)
{
    return static_cast<std::uint8_t>(marker << 4 | low);
}

} // namespace

BinaryWriter::Object BinaryWriter::endObject()
{
    _entries.push_back({_encoded.size(), _references.size()});
    return static_cast<Object>(_entries.size() - 1);
}

// Negative numbers have eight bytes; shorter ones are read as unsigned.
void BinaryWriter::encodeInteger(std::int64_t value)
{
    const std::size_t width = value < 0 ? 8 : widthOf(static_cast<std::uint64_t>(value));
    _encoded.push_back(markerByte(BinaryMarker::Integer, static_cast<std::size_t>(std::countr_zero(width))));
    appendBigEndian(_encoded, static_cast<std::uint64_t>(value), width);
}

void BinaryWriter::encodeMarker(unsigned marker, std::size_t count)
{
    _encoded.push_back(markerByte(marker, std::min(count, BinaryMarker::countFollows)));
    if (count >= BinaryMarker::countFollows)
        encodeInteger(static_cast<std::int64_t>(count));
}

void BinaryWriter::encodeUTF16(std::string_view text)
{
    std::u16string units;
    units.reserve(text.size());
    while (!text.empty()) {
        const char32_t character = takeCharacter(text);
        if (character >= 0x10000) {
            units.push_back(highSurrogateOf(character));
            units.push_back(lowSurrogateOf(character));
        } else {
            units.push_back(static_cast<char16_t>(character));
        }
    }
    encodeMarker(BinaryMarker::UTF16, units.size());
    for (const char16_t unit : units)
        appendBigEndian(_encoded, unit, 2);
}

BinaryWriter::Object BinaryWriter::addBoolean(bool value)
{
    _encoded.push_back(markerByte(BinaryMarker::Simple, value ? BinaryMarker::trueValue : BinaryMarker::falseValue));
    return endObject();
}

BinaryWriter::Object BinaryWriter::addInteger(std::int64_t value)
{
    const auto [found, isNew] = _integers.try_emplace(value, static_cast<Object>(_entries.size()));
    if (!isNew)
        return found->second;
    encodeInteger(value);
    return endObject();
}

// Sixteen bytes, since eight have a sign.
BinaryWriter::Object BinaryWriter::addUnsigned(std::uint64_t value)
{
    _encoded.push_back(markerByte(BinaryMarker::Integer, 4));
    appendBigEndian(_encoded, 0, 8);
    appendBigEndian(_encoded, value, 8);
    return endObject();
}

BinaryWriter::Object BinaryWriter::addReal(double value)
{
    _encoded.push_back(markerByte(BinaryMarker::Real, 3));
    appendBigEndian(_encoded, std::bit_cast<std::uint64_t>(value), 8);
    return endObject();
}

BinaryWriter::Object BinaryWriter::addDate(Date value)
{
    _encoded.push_back(markerByte(BinaryMarker::Date, 3));
    appendBigEndian(_encoded, std::bit_cast<std::uint64_t>(value.secondsSinceReferenceDate), 8);
    return endObject();
}

BinaryWriter::Object BinaryWriter::addData(std::span<const std::uint8_t> value)
{
    encodeMarker(BinaryMarker::Data, value.size());
    _encoded.insert(_encoded.end(), value.begin(), value.end());
    return endObject();
}

BinaryWriter::Object BinaryWriter::addString(std::string_view value)
{
    if (const auto found = _strings.find(value); found != _strings.end())
        return found->second;
    if (std::ranges::all_of(value, [](char character) { return static_cast<unsigned char>(character) < 0x80; })) {
        encodeMarker(BinaryMarker::ASCII, value.size());
        _encoded.insert(_encoded.end(), value.begin(), value.end());
    } else {
        encodeUTF16(value);
    }
    const Object object = endObject();
    if (value.size() <= PropertyListLimits::sharedText)
        _strings.emplace(value, object);
    return object;
}

BinaryWriter::Object BinaryWriter::addUID(UID value)
{
    const std::size_t width = widthOf(value.index);
    _encoded.push_back(markerByte(BinaryMarker::UID, width - 1));
    appendBigEndian(_encoded, value.index, width);
    return endObject();
}

BinaryWriter::Object BinaryWriter::addArray(std::span<const Object> elements)
{
    encodeMarker(BinaryMarker::Array, elements.size());
    _references.insert(_references.end(), elements.begin(), elements.end());
    return endObject();
}

BinaryWriter::Object BinaryWriter::addDictionary(std::span<const Object> keys, std::span<const Object> values)
{
    encodeMarker(BinaryMarker::Dictionary, keys.size());
    _references.insert(_references.end(), keys.begin(), keys.end());
    _references.insert(_references.end(), values.begin(), values.end());
    return endObject();
}

std::optional<BinaryWriter::Object> BinaryWriter::addText(std::string_view text)
{
    if (text.find('\0') != std::string_view::npos || !isValidUTF8(text))
        return std::nullopt;
    return addString(text);
}

std::optional<BinaryWriter::Object> BinaryWriter::addArray(const Array& array, int depth)
{
    std::vector<Object> elements;
    elements.reserve(array.size());
    for (const PropertyList& element : array) {
        const auto object = addValue(element, depth);
        if (!object)
            return std::nullopt;
        elements.push_back(*object);
    }
    return addArray(elements);
}

std::optional<BinaryWriter::Object> BinaryWriter::addDictionary(const Dictionary& dictionary, int depth)
{
    std::vector<Object> keys;
    std::vector<Object> values;
    keys.reserve(dictionary.size());
    values.reserve(dictionary.size());
    for (const Dictionary::Entry& entry : dictionary) {
        const auto key = addText(entry.key);
        const auto value = addValue(entry.value, depth);
        if (!key || !value)
            return std::nullopt;
        keys.push_back(*key);
        values.push_back(*value);
    }
    return addDictionary(keys, values);
}

std::optional<BinaryWriter::Object> BinaryWriter::addValue(const PropertyList& value)
{
    return addValue(value, 0);
}

// `depth` counts the collections around the value.
std::optional<BinaryWriter::Object> BinaryWriter::addValue(const PropertyList& value, int depth)
{
    const bool mayNest = depth < PropertyListLimits::depth;
    switch (value.type()) {
    case PropertyList::Type::Boolean:
        return addBoolean(value.boolValue());
    case PropertyList::Type::Integer:
        return addInteger(value.integerValue());
    case PropertyList::Type::Unsigned:
        return addUnsigned(*value.unsignedInteger());
    case PropertyList::Type::Real:
        return addReal(value.realValue());
    case PropertyList::Type::String:
        return addText(*value.string());
    case PropertyList::Type::Date:
        return addDate(*value.date());
    case PropertyList::Type::Data:
        return addData(*value.data());
    case PropertyList::Type::UID:
        return addUID(*value.uid());
    case PropertyList::Type::Array:
        return mayNest ? addArray(*value.array(), depth + 1) : std::nullopt;
    case PropertyList::Type::Dictionary:
        return mayNest ? addDictionary(*value.dictionary(), depth + 1) : std::nullopt;
    }
    return std::nullopt;
}

Data BinaryWriter::finish(Object root) const
{
    const std::size_t referenceWidth = widthOf(_entries.size() - 1);
    Data bytes(BinaryFormat::header.begin(), BinaryFormat::header.end());
    bytes.reserve(bytes.size() + _encoded.size() + referenceWidth * _references.size() + 8 * _entries.size()
                  + BinaryFormat::trailerSize);
    std::vector<std::uint64_t> offsets;
    offsets.reserve(_entries.size());
    Entry begin = {0, 0};
    for (const Entry& end : _entries) {
        offsets.push_back(bytes.size());
        bytes.insert(bytes.end(), _encoded.begin() + static_cast<std::ptrdiff_t>(begin.encodedEnd),
                     _encoded.begin() + static_cast<std::ptrdiff_t>(end.encodedEnd));
        for (std::uint64_t i = begin.referencesEnd; i < end.referencesEnd; ++i)
            appendBigEndian(bytes, _references[i], referenceWidth);
        begin = end;
    }
    const std::uint64_t table = bytes.size();
    const std::size_t offsetWidth = widthOf(table);
    for (const std::uint64_t offset : offsets)
        appendBigEndian(bytes, offset, offsetWidth);
    appendBigEndian(bytes, offsetWidth << 8 | referenceWidth, 8);
    appendBigEndian(bytes, _entries.size(), 8);
    appendBigEndian(bytes, root, 8);
    appendBigEndian(bytes, table, 8);
    return bytes;
}

} // namespace platform
