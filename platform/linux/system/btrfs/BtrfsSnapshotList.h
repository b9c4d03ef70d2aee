#pragma once

#include "platform/linux/system/btrfs/AttributeRecord.h"

#include <expected>
#include <vector>

namespace platform {

// All snapshots of a btrfs file system, in the order of its tree of roots, which is that of their identifiers. The name
// of a snapshot is its path from the top of the file system.
struct BtrfsSnapshotList {
    std::vector<SnapshotAttributes> snapshots;
    bool isComplete = true; // false when the tree could not be read to its end

    // The failure is an errno value; EPERM without the right to administer the system.
    static std::expected<BtrfsSnapshotList, int> read(int volume);
};

} // namespace platform
