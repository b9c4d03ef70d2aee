#include "diagnostics/snapshots/SnapshotRecords.h"

#include "platform/Snapshots.h"
#include "platform/Unicode.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

using Bytes = std::span<const std::byte>;
using ReturnedSet = std::array<std::uint32_t, 5>; // the common attributes are the first

constexpr std::size_t headSize = sizeof(std::uint32_t) + sizeof(ReturnedSet);

struct NameReference {
    std::int32_t offset;
    std::uint32_t length;
};

struct CreationTime {
    std::int64_t seconds;
    std::int64_t nanoseconds;
};

// Reads the fields of one record in their order. Once one does not fit, no later one does.
class FieldReader {
public:
    explicit FieldReader(Bytes record) : _record(record) { }

    std::size_t place() const { return _place; }

    template <class T>
    std::optional<T> next()
    {
        if (_record.size() - _place < sizeof(T)) {
            _place = _record.size();
            return std::nullopt;
        }
        T value;
        std::memcpy(&value, _record.data() + _place, sizeof value);
        _place += sizeof value;
        return value;
    }

private:
    Bytes _record;
    std::size_t _place = 0;
};

// The text that the reference at `place` leads to.
std::optional<std::string_view> referencedText(Bytes record, std::size_t place, NameReference reference)
{
    const auto begin = static_cast<std::int64_t>(place) + reference.offset;
    const auto size = static_cast<std::int64_t>(record.size());
    if (begin < 0 || begin > size || reference.length > size - begin)
        return std::nullopt;
    const auto* const characters = reinterpret_cast<const char*>(record.data()) + begin;
    const std::string_view text(characters, reference.length);
    const auto end = text.find('\0');
    if (end == std::string_view::npos || !platform::isValidUTF8(text.substr(0, end)))
        return std::nullopt;
    return text.substr(0, end);
}

SnapshotRecord snapshotRecord(Bytes record)
{
    SnapshotRecord found;
    FieldReader fields(record);
    fields.next<std::uint32_t>();
    const auto returned = fields.next<ReturnedSet>().value_or(ReturnedSet()).front();
    if (returned & platform::AttributeName) {
        const auto place = fields.place();
        if (const auto reference = fields.next<NameReference>())
            found.name = referencedText(record, place, *reference);
    }
    if (returned & platform::AttributeObjectIdentifier)
        found.objectIdentifier = fields.next<std::uint64_t>();
    if (returned & platform::AttributeCreationTime) {
        if (const auto time = fields.next<CreationTime>())
            found.creationTime = time->seconds;
    }
    return found;
}

} // namespace

std::vector<SnapshotRecord> snapshotRecords(Bytes buffer, int count)
{
    std::vector<SnapshotRecord> records;
    for (; count > 0; --count) {
        const auto length = FieldReader(buffer).next<std::uint32_t>().value_or(0);
        if (length < headSize || length > buffer.size())
            break;
        records.push_back(snapshotRecord(buffer.first(length)));
        buffer = buffer.subspan(length);
    }
    return records;
}
