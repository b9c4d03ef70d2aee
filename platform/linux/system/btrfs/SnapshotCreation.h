#pragma once

#include <expected>
#include <string>

namespace platform {

// Makes a read-only snapshot of the btrfs volume, below itself in the folder ".brevane-snapshots", which is made when
// it is missing. The result is the snapshot's path. The failure is an errno value: ENOTTY for another file system,
// EEXIST when there is a snapshot of this name.
std::expected<std::string, int> createBtrfsSnapshot(const std::string& volume, const std::string& name);

} // namespace platform
