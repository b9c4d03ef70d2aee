#include "platform/linux/system/propertylists/BinaryGuard.h"

#include "platform/linux/system/errors/CodingError.h"
#include "platform/linux/system/propertylists/BinaryFormat.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <optional>
#include <vector>

namespace platform {

namespace {

using namespace BinaryFormat;
using namespace BinaryMarker;

// What a value may unfold into. Objects may be shared, but not so often that a small input becomes a vast value. A
// large one may have a node for each of its bytes, which lists of a million dictionaries need, up to what memory has
// room for.
constexpr std::uint64_t sharedNodes = 4'000'000;
constexpr std::uint64_t maximumNodes = 10'000'000;
constexpr std::uint64_t sharedBytes = 16U << 20;

using Bytes = std::span<const std::uint8_t>;

std::uint64_t bigEndian(Bytes bytes)
{
    std::uint64_t value = 0;
    for (const std::uint8_t byte : bytes)
        value = value << 8 | byte;
    return value;
}

// Where an object's content is: `count` elements from `content`.
struct Object {
    unsigned marker = 0;
    std::uint64_t count = 0;
    std::size_t content = 0;

    bool isContainer() const { return marker == BinaryMarker::Array || marker == BinaryMarker::Dictionary; }
    std::uint64_t references() const
    {
        return marker == BinaryMarker::Dictionary ? 2 * count : isContainer() ? count : 0;
    }
};

// What an object unfolds into, itself included.
struct Extent {
    enum State : std::uint8_t { Unknown, Entered, Known };

    State state = Unknown;
    bool isString = false;
    std::uint16_t depth = 0; // collections
    std::uint64_t nodes = 1;
    std::uint64_t bytes = 0;
};

class Guard {
public:
    explicit Guard(Bytes bytes)
        : _bytes(bytes),
          _mostNodes(std::clamp<std::uint64_t>(bytes.size(), sharedNodes, maximumNodes))
    {
    }

    bool isSound()
    {
        if (!readTrailer())
            return false;
        _extents.resize(_objectCount);
        return measure(_root);
    }

private:
    struct Visit {
        std::uint64_t index;
        Object object;
        std::uint64_t next = 0; // reference
    };

    bool readTrailer();
    std::optional<Object> objectAtIndex(std::uint64_t index) const;
    bool readCount(Object& object, unsigned low) const;
    bool fits(const Object& object, std::uint64_t elementSize) const;
    bool isSoundScalar(const Object& object, unsigned low) const;
    bool measure(std::uint64_t root);
    bool enter(std::uint64_t index, std::vector<Visit>& path);
    bool add(std::uint64_t parent, std::uint64_t child);

    Bytes _bytes;
    std::uint64_t _mostNodes;
    std::size_t _offsetSize = 0;
    std::size_t _referenceSize = 0;
    std::uint64_t _objectCount = 0;
    std::uint64_t _root = 0;
    std::uint64_t _table = 0;
    std::uint64_t _visited = 0; // references, some of them twice
    std::vector<Extent> _extents;
};

bool Guard::readTrailer()
{
    if (_bytes.size() < header.size() + trailerSize + 1 || _bytes.size() > std::numeric_limits<std::uint32_t>::max()
        || std::memcmp(_bytes.data(), header.data(), header.size()) != 0)
        return false;
    const Bytes trailer = _bytes.last(trailerSize);
    _offsetSize = trailer[6];
    _referenceSize = trailer[7];
    _objectCount = bigEndian(trailer.subspan(8, 8));
    _root = bigEndian(trailer.subspan(16, 8));
    _table = bigEndian(trailer.subspan(24, 8));
    if (_offsetSize < 1 || _offsetSize > 8 || _referenceSize < 1 || _referenceSize > 8)
        return false;
    const std::uint64_t end = _bytes.size() - trailerSize;
    return _root < _objectCount && _table >= header.size() && _table < end
        && _objectCount <= (end - _table) / _offsetSize && _objectCount <= _mostNodes;
}

// Content lies between the header and the offset table.
bool Guard::fits(const Object& object, std::uint64_t elementSize) const
{
    return object.content <= _table && object.count <= (_table - object.content) / elementSize;
}

// Counts from 15 on follow as an integer object.
bool Guard::readCount(Object& object, unsigned low) const
{
    object.count = low;
    if (low != countFollows)
        return true;
    if (object.content >= _table || _bytes[object.content] >> 4 != Integer)
        return false;
    const unsigned exponent = _bytes[object.content] & 0xF;
    const std::size_t size = std::size_t{1} << std::min(exponent, 4U);
    if (exponent > 3 || object.content + 1 + size > _table)
        return false;
    object.count = bigEndian(_bytes.subspan(object.content + 1, size));
    object.content += 1 + size;
    return object.count <= _bytes.size();
}

bool Guard::isSoundScalar(const Object& object, unsigned low) const
{
    const auto content = [&](std::size_t size) { return _bytes.subspan(object.content, size); };
    const auto room = _table - std::min<std::uint64_t>(object.content, _table);
    switch (object.marker) {
    case Simple:
        return low == falseValue || low == trueValue;
    case Integer:
        // Sixteen bytes are for unsigned numbers beyond the signed range, for which there is no value.
        return low <= 4 && room >= (1U << low) && (low < 4 || (bigEndian(content(8)) == 0 && content(9)[8] < 0x80));
    case Real:
        return (low == 2 || low == 3) && room >= (1U << low);
    case BinaryMarker::Date: {
        if (low != 3 || room < 8)
            return false;
        const auto seconds = std::bit_cast<double>(bigEndian(content(8)));
        return std::isfinite(seconds);
    }
    case Reference:
        return low <= 7 && room >= low + 1U;
    default:
        return false;
    }
}

bool isSoundASCII(Bytes text)
{
    return std::all_of(text.begin(), text.end(), [](std::uint8_t byte) { return byte > 0 && byte < 0x80; });
}

bool isSoundUTF16(Bytes text)
{
    for (std::size_t i = 0; i < text.size(); i += 2) {
        const auto unit = bigEndian(text.subspan(i, 2));
        if (unit == 0 || (unit & 0xFC00) == 0xDC00)
            return false;
        if ((unit & 0xFC00) != 0xD800)
            continue;
        i += 2;
        if (i >= text.size() || (bigEndian(text.subspan(i, 2)) & 0xFC00) != 0xDC00)
            return false;
    }
    return true;
}

std::optional<Object> Guard::objectAtIndex(std::uint64_t index) const
{
    const auto offset = bigEndian(_bytes.subspan(_table + index * _offsetSize, _offsetSize));
    if (offset < header.size() || offset >= _table)
        return std::nullopt;
    const std::uint8_t first = _bytes[offset];
    Object object{static_cast<unsigned>(first >> 4), 0, static_cast<std::size_t>(offset) + 1};
    bool sound = false;
    switch (object.marker) {
    case BinaryMarker::Data:
        sound = readCount(object, first & 0xF) && fits(object, 1);
        break;
    case ASCII:
        sound = readCount(object, first & 0xF) && fits(object, 1)
            && isSoundASCII(_bytes.subspan(object.content, object.count));
        break;
    case UTF16:
        sound = readCount(object, first & 0xF) && fits(object, 2)
            && isSoundUTF16(_bytes.subspan(object.content, 2 * object.count));
        break;
    case BinaryMarker::Array:
        sound = readCount(object, first & 0xF) && fits(object, _referenceSize);
        break;
    case BinaryMarker::Dictionary:
        sound = readCount(object, first & 0xF) && fits(object, 2 * _referenceSize);
        break;
    default:
        sound = isSoundScalar(object, first & 0xF);
        break;
    }
    return sound ? std::optional(object) : std::nullopt;
}

bool Guard::enter(std::uint64_t index, std::vector<Visit>& path)
{
    const auto object = objectAtIndex(index);
    if (!object || path.size() > maximumPropertyListDepth)
        return false;
    Extent& extent = _extents[index];
    extent.depth = object->isContainer() ? 1 : 0;
    extent.state = Extent::Entered;
    extent.isString = object->marker == ASCII || object->marker == UTF16;
    extent.bytes = object->isContainer() ? 0 : 2 * object->count;
    path.push_back({index, *object});
    return true;
}

bool Guard::add(std::uint64_t parent, std::uint64_t child)
{
    Extent& extent = _extents[parent];
    const Extent& part = _extents[child];
    extent.depth = std::max<std::uint16_t>(extent.depth, part.depth + 1);
    extent.nodes += part.nodes;
    extent.bytes += part.bytes;
    return extent.depth <= maximumPropertyListDepth && extent.nodes <= _mostNodes
        && extent.bytes <= sharedBytes + 4 * _bytes.size();
}

// Depth first; each object is measured once, however many refer to it.
bool Guard::measure(std::uint64_t root)
{
    std::vector<Visit> path;
    if (!enter(root, path))
        return false;
    while (!path.empty()) {
        Visit& visit = path.back();
        if (visit.next == visit.object.references()) {
            _extents[visit.index].state = Extent::Known;
            path.pop_back();
            continue;
        }
        const auto at = visit.object.content + visit.next * _referenceSize;
        const auto child = bigEndian(_bytes.subspan(at, _referenceSize));
        if (child >= _objectCount || ++_visited > 2 * _mostNodes || _extents[child].state == Extent::Entered)
            return false;
        if (_extents[child].state == Extent::Unknown) {
            if (!enter(child, path))
                return false;
            continue;
        }
        const bool isKey = visit.object.marker == BinaryMarker::Dictionary && visit.next < visit.object.count;
        if ((isKey && !_extents[child].isString) || !add(visit.index, child))
            return false;
        ++visit.next;
    }
    return true;
}

} // namespace

bool isSoundBinaryPropertyList(std::span<const std::uint8_t> bytes)
{
    return Guard(bytes).isSound();
}

} // namespace platform
