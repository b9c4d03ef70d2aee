#pragma once

#include <expected>
#include <string>

namespace helper {

// Where this program runs as a unit of the system, volumes are read-only for it, and another unit, which lives for this
// work alone, makes and removes snapshots; elsewhere this process does. They fail with the reason as a clause.

// A read-only snapshot of the btrfs volume; its path.
std::expected<std::string, std::string> makeSnapshotApart(const std::string& volume);
std::expected<void, std::string> removeSnapshotApart(const std::string& path);

} // namespace helper
