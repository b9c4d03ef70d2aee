#pragma once

#include "platform/Error.h"
#include "platform/linux/system/btrfs/BtrfsSnapshotList.h"
#include "platform/PropertyList.h"

#include <string>

namespace helper {

// What is told of a volume at most, so that the reply and the memory for it stay small.
inline constexpr platform::BtrfsSnapshotLimits SnapshotListingLimits{65'536, std::size_t(8) << 20};

// The reply to BRVMessageListSnapshots. The path must be that of a mounted btrfs file system, as the system's table has
// it. May take seconds. Fails with an errno value's error; ENOENT for any other path.
platform::Result<platform::PropertyList>
listLocalSnapshots(const std::string& volume, const platform::BtrfsSnapshotLimits& limits = SnapshotListingLimits);

} // namespace helper
