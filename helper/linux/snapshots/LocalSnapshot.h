#pragma once

#include "helper/snapshots/LocalSnapshots.h"

#include <expected>
#include <string>

namespace helper {

// Makes a read-only snapshot of the btrfs volume, named after the present time in UTC, and tells the other programs of
// the product. Its path, or an errno value.
std::expected<std::string, int> makeLocalSnapshot(const std::string& volume);

// Why one could not be made or removed.
std::string textOfSnapshotFailure(int code);

} // namespace helper
