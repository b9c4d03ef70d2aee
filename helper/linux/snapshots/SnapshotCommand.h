#pragma once

#include <optional>

namespace helper {

// "--snapshot VOLUME": makes a read-only snapshot of the btrfs volume, named after the present time, prints its path
// and lets the other programs of the product know. "--remove-snapshot PATH" removes one. The exit status; nullopt when
// the arguments ask for something else.
std::optional<int> runSnapshotCommand(int count, const char* const* arguments);

} // namespace helper
