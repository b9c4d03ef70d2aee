#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace platform {

struct SnapshotAttributes {
    std::uint64_t objectIdentifier = 0;
    std::int64_t creationSeconds = 0; // since 1970
    std::int64_t creationNanoseconds = 0;
    std::string name; // UTF-8
};

// In bytes, of the record that packAttributeRecord makes.
std::size_t sizeOfAttributeRecord(const SnapshotAttributes& snapshot);
// Writes a packed attribute record at the beginning of the buffer. Its size; 0 when the buffer is too small.
std::size_t packAttributeRecord(const SnapshotAttributes& snapshot, std::span<std::byte> buffer);

} // namespace platform
