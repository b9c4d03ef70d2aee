#include "tests/snapshots/support/RecordBuilder.h"

#include <cstring>

namespace {

template <class T>
void append(std::vector<std::byte>& bytes, T value)
{
    const auto* const first = reinterpret_cast<const std::byte*>(&value);
    bytes.insert(bytes.end(), first, first + sizeof value);
}

} // namespace

std::vector<std::byte> RecordBuilder::bytes() const
{
    std::vector<std::byte> bytes;
    append(bytes, std::uint32_t(0)); // the length, once it is known
    append(
        bytes,
        std::uint32_t(0x80000000u | (name ? 0x1u : 0) | (objectIdentifier ? 0x20u : 0) | (creationTime ? 0x200u : 0)));
    for (int group = 0; group < 4; ++group)
        append(bytes, otherMasks);
    const std::size_t rest = (objectIdentifier ? 8 : 0) + (creationTime ? 16 : 0);
    if (name) {
        append(bytes, nameOffset.value_or(static_cast<std::int32_t>(8 + rest)));
        append(bytes, nameLength.value_or(static_cast<std::uint32_t>(name->size() + (endsWithZero ? 1 : 0))));
    }
    if (objectIdentifier)
        append(bytes, *objectIdentifier);
    if (creationTime) {
        append(bytes, *creationTime);
        append(bytes, std::int64_t(999'999'999)); // nanoseconds, which do not count
    }
    if (name) {
        for (const char character : *name)
            append(bytes, character);
        if (endsWithZero)
            append(bytes, '\0');
    }
    bytes.resize(bytes.size() + padding);
    const std::uint32_t size = length.value_or(static_cast<std::uint32_t>(bytes.size()));
    std::memcpy(bytes.data(), &size, sizeof size);
    return bytes;
}

std::vector<std::byte> joinedRecords(const std::vector<RecordBuilder>& records)
{
    std::vector<std::byte> joined;
    for (const auto& record : records) {
        const auto bytes = record.bytes();
        joined.insert(joined.end(), bytes.begin(), bytes.end());
    }
    return joined;
}

scripted::snapshots::Answer answerOf(const std::vector<RecordBuilder>& records)
{
    return {static_cast<int>(records.size()), joinedRecords(records)};
}
