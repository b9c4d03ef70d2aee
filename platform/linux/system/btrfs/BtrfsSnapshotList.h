#pragma once

#include "platform/linux/system/btrfs/AttributeRecord.h"

#include <cstddef>
#include <cstdint>
#include <expected>
#include <vector>

namespace platform {

// Anybody can make subvolumes, deep in folders of long names.
struct BtrfsSnapshotLimits {
    std::size_t subvolumes = SIZE_MAX; // looked at, snapshots or not
    std::size_t nameBytes = SIZE_MAX;  // of all names together
};

// All snapshots of a btrfs file system, in the order of its tree of roots, which is that of their identifiers. The name
// of a snapshot is its path from the top of the file system.
struct BtrfsSnapshotList {
    std::vector<SnapshotAttributes> snapshots;
    bool isComplete = true; // false when the tree could not be read to its end, or holds more than the limits allow

    // The failure is an errno value; EPERM without the right to administer the system.
    static std::expected<BtrfsSnapshotList, int> read(int volume, const BtrfsSnapshotLimits& limits = {});
};

} // namespace platform
