#pragma once

#include <expected>
#include <optional>
#include <string>

namespace platform {

// Where they are, below the top of their volume.
inline constexpr const char* BtrfsSnapshotFolder = ".brevane-snapshots";

// Makes a read-only snapshot of the btrfs volume, below itself in that folder, which is made when it is missing. The
// result is the snapshot's path. The failure is an errno value: ENOTTY for another file system, EEXIST when there is a
// snapshot of this name.
std::expected<std::string, int> createBtrfsSnapshot(const std::string& volume, const std::string& name);

// The top of the btrfs volume or subvolume that the file or folder lies in; nullopt on another file system.
std::optional<std::string> btrfsVolumeOf(const std::string& path);

// What tells a subvolume from all others that there have been; nullopt when the path is none, or leads over a link at
// its end.
std::optional<std::string> identifierOfBtrfsSnapshot(const std::string& path);

// Removes the subvolume. The failure is an errno value.
std::expected<void, int> removeBtrfsSnapshot(const std::string& path);

} // namespace platform
