#include "platform/linux/system/propertylists/BinaryReader.h"

#include "platform/linux/system/propertylists/BinaryFormat.h"
#include "platform/linux/system/propertylists/Limits.h"
#include "platform/linux/system/propertylists/TextEncoding.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>
#include <vector>

namespace platform {

using namespace BinaryFormat;

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

// Big-endian, of one to eight bytes, anywhere behind the header.
inline std::uint64_t BinaryReader::numberAt(std::size_t at, std::size_t size) const
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
    if (object.count != BinaryMarker::countFollows)
        return true;
    if (object.content >= _table || _bytes[object.content] >> 4 != BinaryMarker::Integer)
        return false;
    const unsigned exponent = _bytes[object.content] & 0xF;
    const std::size_t size = std::size_t{1} << std::min(exponent, 3U);
    if (exponent > 3 || _table - object.content - 1 < size)
        return false;
    object.count = numberAt(object.content + 1, size);
    object.content += 1 + size;
    return true;
}

// Whether so many bytes of content lie before the table.
inline bool BinaryReader::holds(const Object& object, std::size_t size) const
{
    return _table - object.content >= size;
}

inline bool BinaryReader::findObject(std::uint64_t index, Object& object) const
{
    if (index >= _objectCount)
        return false;
    const auto offset = numberAt(_table + index * _offsetSize, _offsetSize);
    if (offset < header.size() || offset >= _table)
        return false;
    const std::uint8_t first = _bytes[offset];
    object = {static_cast<unsigned>(first >> 4), first & 0xFU, static_cast<std::size_t>(offset) + 1};
    const bool isCounted = (object.marker >= BinaryMarker::Data && object.marker <= BinaryMarker::UTF16)
        || object.marker == BinaryMarker::Array || object.marker == BinaryMarker::Dictionary;
    return !isCounted || readCount(object);
}

inline std::uint64_t BinaryReader::reference(const Object& object, std::size_t number) const
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

template <class Place>
bool BinaryReader::readValue(std::uint64_t index, int depth, const Place& place)
{
    Object object;
    if (!findObject(index, object))
        return false;
    const auto placeIf = [&](bool isSound, auto& content) {
        if (isSound)
            place(std::move(content));
        return isSound;
    };
    switch (object.marker) {
    case BinaryMarker::Simple:
        if (object.count != BinaryMarker::falseValue && object.count != BinaryMarker::trueValue)
            return false;
        place(object.count == BinaryMarker::trueValue);
        return true;
    case BinaryMarker::Integer:
        return readInteger(object, place);
    case BinaryMarker::Real: {
        double real = 0;
        return placeIf(readReal(object, real), real);
    }
    case BinaryMarker::Date:
        if (object.count != 3 || !holds(object, 8))
            return false;
        place(platform::Date{std::bit_cast<double>(numberAt(object.content, 8))});
        return true;
    case BinaryMarker::Data: {
        platform::Data data;
        return placeIf(readData(object, data), data);
    }
    case BinaryMarker::ASCII:
    case BinaryMarker::UTF16: {
        std::string string;
        return placeIf(readText(object, string), string);
    }
    case BinaryMarker::UID:
        if (object.count > 7 || !holds(object, object.count + 1))
            return false;
        place(platform::UID{numberAt(object.content, object.count + 1)});
        return true;
    case BinaryMarker::Array: {
        platform::Array array;
        return placeIf(readArray(object, depth + 1, array), array);
    }
    case BinaryMarker::Dictionary: {
        platform::Dictionary dictionary;
        return placeIf(readDictionary(object, depth + 1, dictionary), dictionary);
    }
    default:
        return false;
    }
}

// Those of eight bytes have a sign, shorter ones have none, and of sixteen bytes are what eight with a sign cannot
// hold.
template <class Place>
bool BinaryReader::readInteger(const Object& object, const Place& place) const
{
    const std::size_t size = std::size_t{1} << std::min<std::size_t>(object.count, 4);
    if (object.count > 4 || !holds(object, size))
        return false;
    if (size < 16) {
        place(static_cast<std::int64_t>(numberAt(object.content, size)));
        return true;
    }
    const auto high = static_cast<std::int64_t>(numberAt(object.content, 8));
    const std::uint64_t low = numberAt(object.content + 8, 8);
    const auto number = static_cast<std::int64_t>(low);
    if (high == 0)
        place(low);
    else if (high == -1 && number < 0)
        place(number);
    else
        return false;
    return true;
}

bool BinaryReader::readReal(const Object& object, double& real) const
{
    const std::size_t size = std::size_t{1} << std::min<std::size_t>(object.count, 3);
    if (object.count < 2 || object.count > 3 || !holds(object, size))
        return false;
    const std::uint64_t bits = numberAt(object.content, size);
    real = size == 8 ? std::bit_cast<double>(bits)
                     : static_cast<double>(std::bit_cast<float>(static_cast<std::uint32_t>(bits)));
    return true;
}

bool BinaryReader::readData(const Object& object, platform::Data& data)
{
    if (!fits(object, 1) || !spendContent(object.count))
        return false;
    const auto content = _bytes.subspan(object.content, object.count);
    data.assign(content.begin(), content.end());
    return true;
}

bool BinaryReader::readText(const Object& object, std::string& text)
{
    if (object.marker == BinaryMarker::ASCII) {
        if (!fits(object, 1) || !spendContent(object.count))
            return false;
        const auto bytes = _bytes.subspan(object.content, object.count);
        text.assign(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return isASCIIWithoutNUL(bytes);
    }
    if (object.marker != BinaryMarker::UTF16 || !fits(object, 2) || !spendContent(2 * object.count))
        return false;
    auto converted = utf8OfUTF16(_bytes.subspan(object.content, 2 * object.count), true);
    if (!converted || converted->find('\0') != std::string::npos)
        return false;
    text = std::move(*converted);
    return true;
}

bool BinaryReader::readArray(const Object& object, int depth, platform::Array& array)
{
    if (depth > PropertyListLimits::depth || !fits(object, _referenceSize) || !spendValues(object.count))
        return false;
    array.reserve(object.count);
    const auto place = [&](auto&& content) { array.emplace_back(std::forward<decltype(content)>(content)); };
    for (std::size_t i = 0; i < object.count; ++i) {
        if (!readValue(reference(object, i), depth, place))
            return false;
    }
    return true;
}

// Whether the dictionary's keys are those that the shape knows already.
bool BinaryReader::hasShape(const Object& object, const Shape& shape) const
{
    if (object.count != shape.references.size())
        return false;
    for (std::size_t i = 0; i < object.count; ++i) {
        if (reference(object, i) != shape.references[i])
            return false;
    }
    return true;
}

bool BinaryReader::readKey(const Object& object, std::size_t number, std::string& key)
{
    Object keyObject;
    return findObject(reference(object, number), keyObject) && readText(keyObject, key);
}

bool BinaryReader::readShape(const Object& object, Shape& shape)
{
    shape = {};
    shape.references.reserve(object.count);
    std::vector<std::string> keys(object.count);
    const std::size_t contentLeft = _contentLeft;
    for (std::size_t i = 0; i < object.count; ++i) {
        shape.references.push_back(reference(object, i));
        if (!readKey(object, i, keys[i]))
            return false;
    }
    shape.content = contentLeft - _contentLeft;
    bool isDistinct = true;
    for (auto key = keys.begin(); key != keys.end(); ++key)
        isDistinct = isDistinct && std::find(keys.begin(), key, *key) == key;
    if (isDistinct)
        shape.keys = DictionaryKeys(std::move(keys));
    return true;
}

bool BinaryReader::readDictionary(const Object& object, int depth, platform::Dictionary& dictionary)
{
    if (depth > PropertyListLimits::depth || !fits(object, 2 * _referenceSize) || !spendValues(2 * object.count))
        return false;
    if (object.count > largestShape)
        return readMembers(object, depth, dictionary);
    if (_shapes.size() < static_cast<std::size_t>(depth))
        _shapes.resize(depth);
    Shape& shape = _shapes[depth - 1];
    if (hasShape(object, shape) ? !spendContent(shape.content) : !readShape(object, shape))
        return false;
    if (shape.keys.size() != object.count) {
        _contentLeft += shape.content; // its keys are read once more
        return readMembers(object, depth, dictionary);
    }
    std::vector<PropertyList> values;
    values.reserve(object.count);
    const auto place = [&](auto&& content) { values.emplace_back(std::forward<decltype(content)>(content)); };
    for (std::size_t i = 0; i < object.count; ++i) {
        if (!readValue(reference(object, object.count + i), depth, place))
            return false;
    }
    dictionary = platform::Dictionary(shape.keys, std::move(values));
    return true;
}

// One by one: of a key given twice, the last value at the first place.
bool BinaryReader::readMembers(const Object& object, int depth, platform::Dictionary& dictionary)
{
    std::string key;
    const auto place = [&](auto&& content) { dictionary.set(key, std::forward<decltype(content)>(content)); };
    for (std::size_t i = 0; i < object.count; ++i) {
        if (!readKey(object, i, key) || !readValue(reference(object, object.count + i), depth, place))
            return false;
    }
    return true;
}

std::optional<PropertyList> BinaryReader::read()
{
    if (!readTrailer() || !spendValues(1))
        return std::nullopt;
    std::optional<PropertyList> value;
    const bool isSound =
        readValue(_root, 0, [&](auto&& content) { value.emplace(std::forward<decltype(content)>(content)); });
    return isSound ? std::move(value) : std::nullopt;
}

} // namespace platform
