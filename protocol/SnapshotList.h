#pragma once

// The local snapshots of a volume: the payload of BRVMessageListSnapshots, and its reply.
namespace SnapshotListKey {

// Of the payload.
inline constexpr const char* Volume = "Volume"; // string: the path of a mount point

// Of the reply.
inline constexpr const char* Snapshots = "Snapshots"; // array of dictionaries in the order of the file system
inline constexpr const char* Complete = "Complete";   // boolean: false when there are more than are told

// Of a snapshot.
inline constexpr const char* Name = "Name"; // string
inline constexpr const char* Date = "Date"; // date: when it was made
inline constexpr const char* Size = "Size"; // integer: bytes; absent where the file system does not count them

} // namespace SnapshotListKey
