#include "platform/linux/system/propertylists/BinaryReader.h"

#include "platform/linux/system/propertylists/BinaryFormat.h"
#include "platform/linux/system/propertylists/Limits.h"
#include "platform/linux/system/propertylists/TextEncoding.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace platform {

using namespace BinaryFormat;
using namespace BinaryMarker;

namespace {

// Without a branch, so that long texts are looked through quickly.
bool isASCIIWithoutNUL(std::span<const std::uint8_t> text)
{
    unsigned odd = 0;
    for (const std::uint8_t byte : text)
        odd |= byte | (byte - 1U);
    return (odd & 0x80) == 0;
}

} // namespace

BinaryReader::BinaryReader(std::span<const std::uint8_t> bytes, std::size_t maximumValues)
    : _bytes(bytes),
      _valuesLeft(std::min(PropertyListLimits::values(bytes.size()), maximumValues)),
      _contentLeft(PropertyListLimits::content(bytes.size()))
{
}

std::optional<PropertyList> BinaryReader::read()
{
    if (!readTrailer() || !spendValues(1))
        return std::nullopt;
    auto value = readValue(_root, 0);
    return _isDamaged ? std::nullopt : std::optional(std::move(value));
}

// Big-endian, of one to eight bytes, anywhere behind the header.
std::uint64_t BinaryReader::numberAt(std::size_t at, std::size_t size) const
{
    std::uint64_t number = 0;
    std::memcpy(&number, _bytes.data() + at + size - 8, 8); // the header has eight bytes too
    if constexpr (std::endian::native == std::endian::little)
        number = std::byteswap(number);
    return size == 8 ? number : number & ((std::uint64_t{1} << (8 * size)) - 1);
}

bool BinaryReader::readTrailer()
{
    static_assert(header.size() == 8);
    if (_bytes.size() < header.size() + trailerSize + 1
        || std::memcmp(_bytes.data(), header.data(), header.size()) != 0)
        return false;
    const std::size_t end = _bytes.size() - trailerSize;
    _offsetSize = _bytes[end + 6];
    _referenceSize = _bytes[end + 7];
    _objectCount = numberAt(end + 8, 8);
    _root = numberAt(end + 16, 8);
    const std::uint64_t table = numberAt(end + 24, 8);
    if (_offsetSize < 1 || _offsetSize > 8 || _referenceSize < 1 || _referenceSize > 8 || table < header.size()
        || table >= end)
        return false;
    _table = table;
    return _objectCount <= (end - _table) / _offsetSize;
}

bool BinaryReader::fits(const Object& object, std::size_t elementSize) const
{
    return object.content <= _table && object.count <= (_table - object.content) / elementSize;
}

// Counts from 15 on follow as an integer object.
bool BinaryReader::readCount(Object& object) const
{
    if (object.count != countFollows)
        return true;
    if (object.content >= _table || _bytes[object.content] >> 4 != Integer)
        return false;
    const unsigned exponent = _bytes[object.content] & 0xF;
    const std::size_t size = std::size_t{1} << std::min(exponent, 3U);
    if (exponent > 3 || _table - object.content - 1 < size)
        return false;
    object.count = numberAt(object.content + 1, size);
    object.content += 1 + size;
    return true;
}

std::optional<BinaryReader::Object> BinaryReader::objectAtIndex(std::uint64_t index)
{
    if (index >= _objectCount)
        return std::nullopt;
    const auto offset = numberAt(_table + index * _offsetSize, _offsetSize);
    if (offset < header.size() || offset >= _table)
        return std::nullopt;
    const std::uint8_t first = _bytes[offset];
    Object object{static_cast<unsigned>(first >> 4), first & 0xFU, static_cast<std::size_t>(offset) + 1};
    const bool isCounted = (object.marker >= BinaryMarker::Data && object.marker <= UTF16)
        || object.marker == BinaryMarker::Array || object.marker == BinaryMarker::Dictionary;
    return !isCounted || readCount(object) ? std::optional(object) : std::nullopt;
}

std::uint64_t BinaryReader::reference(const Object& object, std::size_t number) const
{
    return numberAt(object.content + number * _referenceSize, _referenceSize);
}

bool BinaryReader::spendValues(std::size_t count)
{
    if (count > _valuesLeft)
        return false;
    _valuesLeft -= count;
    return true;
}

bool BinaryReader::spendContent(std::size_t size)
{
    if (size > _contentLeft)
        return false;
    _contentLeft -= size;
    return true;
}

PropertyList BinaryReader::damaged()
{
    _isDamaged = true;
    return false;
}

PropertyList BinaryReader::readValue(std::uint64_t index, int depth)
{
    const auto object = objectAtIndex(index);
    if (!object)
        return damaged();
    switch (object->marker) {
    case BinaryMarker::Data:
        return readData(*object);
    case ASCII:
    case UTF16: {
        std::string text;
        return readText(*object, text) ? PropertyList(std::move(text)) : damaged();
    }
    case BinaryMarker::Array:
        return readArray(*object, depth + 1);
    case BinaryMarker::Dictionary:
        return readDictionary(*object, depth + 1);
    default:
        return readScalar(*object);
    }
}

PropertyList BinaryReader::readScalar(const Object& object)
{
    switch (object.marker) {
    case Simple:
        return object.count == falseValue || object.count == trueValue ? object.count == trueValue : damaged();
    case Integer:
        return readInteger(object);
    case Real:
        return readReal(object);
    case BinaryMarker::Date:
        if (object.count != 3 || _table - object.content < 8)
            return damaged();
        return platform::Date{std::bit_cast<double>(numberAt(object.content, 8))};
    case BinaryMarker::UID:
        return readUID(object);
    default:
        return damaged();
    }
}

// Those of eight bytes have a sign, shorter ones have none, and of sixteen bytes are what eight with a sign cannot
// hold.
PropertyList BinaryReader::readInteger(const Object& object)
{
    const std::size_t size = std::size_t{1} << std::min<std::size_t>(object.count, 4);
    if (object.count > 4 || _table - object.content < size)
        return damaged();
    if (size < 16)
        return static_cast<std::int64_t>(numberAt(object.content, size));
    const auto high = static_cast<std::int64_t>(numberAt(object.content, 8));
    const std::uint64_t low = numberAt(object.content + 8, 8);
    if (high == 0)
        return low;
    const auto number = static_cast<std::int64_t>(low);
    return high == -1 && number < 0 ? PropertyList(number) : damaged();
}

PropertyList BinaryReader::readReal(const Object& object)
{
    const std::size_t size = std::size_t{1} << std::min<std::size_t>(object.count, 3);
    if (object.count < 2 || object.count > 3 || _table - object.content < size)
        return damaged();
    const std::uint64_t bits = numberAt(object.content, size);
    return size == 8 ? std::bit_cast<double>(bits)
                     : static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
}

PropertyList BinaryReader::readUID(const Object& object)
{
    const std::size_t size = object.count + 1;
    if (size > 8 || _table - object.content < size)
        return damaged();
    return platform::UID{numberAt(object.content, size)};
}

PropertyList BinaryReader::readData(const Object& object)
{
    if (!fits(object, 1) || !spendContent(object.count))
        return damaged();
    const auto data = _bytes.subspan(object.content, object.count);
    return platform::Data(data.begin(), data.end());
}

bool BinaryReader::readText(const Object& object, std::string& text)
{
    if (object.marker == ASCII) {
        if (!fits(object, 1) || !spendContent(object.count))
            return false;
        const auto bytes = _bytes.subspan(object.content, object.count);
        text.assign(bytes.begin(), bytes.end());
        return isASCIIWithoutNUL(bytes);
    }
    if (object.marker != UTF16 || !fits(object, 2) || !spendContent(2 * object.count))
        return false;
    auto converted = utf8OfUTF16(_bytes.subspan(object.content, 2 * object.count), true);
    if (!converted || converted->find('\0') != std::string::npos)
        return false;
    text = std::move(*converted);
    return true;
}

PropertyList BinaryReader::readArray(const Object& object, int depth)
{
    if (depth > PropertyListLimits::depth || !fits(object, _referenceSize) || !spendValues(object.count))
        return damaged();
    platform::Array array;
    array.reserve(object.count);
    for (std::size_t i = 0; i < object.count && !_isDamaged; ++i)
        array.push_back(readValue(reference(object, i), depth));
    return array;
}

PropertyList BinaryReader::readDictionary(const Object& object, int depth)
{
    if (depth > PropertyListLimits::depth || !fits(object, 2 * _referenceSize) || !spendValues(2 * object.count))
        return damaged();
    platform::Dictionary dictionary;
    dictionary.reserve(object.count);
    std::string key;
    for (std::size_t i = 0; i < object.count && !_isDamaged; ++i) {
        const auto keyObject = objectAtIndex(reference(object, i));
        if (!keyObject || !readText(*keyObject, key))
            return damaged();
        dictionary.set(key, readValue(reference(object, object.count + i), depth));
    }
    return dictionary;
}

} // namespace platform
