#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

// What one packed attribute record says of a snapshot.
struct SnapshotRecord {
    std::optional<std::string_view> name; // in the buffer
    std::optional<std::uint64_t> objectIdentifier;
    std::optional<std::int64_t> creationTime; // whole seconds since 1970
};

// Walks `count` packed attribute records as platform/Snapshots.h describes them. What reaches out of its record, and a
// name that is not UTF-8 or lacks its zero byte, is as if it had not been returned; a record whose length is too small
// or reaches out of the buffer ends the walk.
std::vector<SnapshotRecord> snapshotRecords(std::span<const std::byte> buffer, int count);
