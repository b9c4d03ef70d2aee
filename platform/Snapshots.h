#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>

namespace platform {

// Masks of the common attributes in a record's returned set.
inline constexpr std::uint32_t AttributeName = 0x00000001;
inline constexpr std::uint32_t AttributeObjectIdentifier = 0x00000020;
inline constexpr std::uint32_t AttributeCreationTime = 0x00000200;
inline constexpr std::uint32_t AttributeReturnedSet = 0x80000000;

// What a process lacks that may not see snapshots.
enum class SnapshotAccess {
    FullDisk,      // which the user gives to the application in the settings
    Administrator, // nobody else may: the scheduler helper lists them for users who are authorized
};
SnapshotAccess missingSnapshotAccess();

// The snapshots of one mounted volume, as the file system hands them out: packed attribute records. Each record is, in
// the byte order of the machine and without padding,
//     its length in bytes with everything after it, 32 bits;
//     the returned set: five 32-bit masks, the common attributes first;
// and then, each only when its mask is set,
//     the name: a signed 32-bit offset from this very place to the text, and the text's 32-bit length; the text is
//     UTF-8 and ends with a zero byte, which the length counts; the object identifier, 64 bits; the creation time:
//     seconds since 1970 and nanoseconds, signed 64 bits each.
class SnapshotVolume {
public:
    // The failure is an errno value; EPERM: this process may not see the snapshots.
    static std::expected<std::unique_ptr<SnapshotVolume>, int> open(const std::string& url);
    virtual ~SnapshotVolume() = default;

    // How large a buffer nextRecords wants, in bytes.
    virtual std::size_t bufferSize() const = 0;
    // Puts as many of the next records as fit into the buffer. Their number; 0 when there are no more, -1 on failure.
    virtual int nextRecords(std::span<std::byte> buffer) = 0;
    // In bytes. nullopt when the file system does not count it.
    virtual std::optional<std::uint64_t> sizeOfSnapshot(std::uint64_t objectIdentifier) = 0;
};

} // namespace platform
