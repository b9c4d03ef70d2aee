#include "helper/linux/snapshots/SnapshotListing.h"

#include "platform/FileDescriptor.h"
#include "platform/linux/system/btrfs/BtrfsQuota.h"
#include "platform/linux/system/volumes/MountTable.h"
#include "protocol/SnapshotList.h"
#include "scheduling/InstantDate.h"

#include <algorithm>
#include <cerrno>
#include <expected>
#include <fcntl.h>
#include <utility>

namespace helper {

namespace {

std::unexpected<platform::Error> failure(int code)
{
    return std::unexpected(platform::Error{platform::POSIXErrorDomain, code, {}, nullptr});
}

// Only what root has mounted is opened: any other path could lead to somebody's own file system, which answers when it
// likes.
bool isMountedBtrfs(const std::string& path)
{
    const auto table = platform::MountTable::read();
    const auto* const mount = table ? table->at(path) : nullptr;
    return mount && isBtrfs(*mount);
}

} // namespace

platform::Result<platform::PropertyList> listLocalSnapshots(const std::string& volume,
                                                            const platform::BtrfsSnapshotLimits& limits)
{
    if (!isMountedBtrfs(volume))
        return failure(ENOENT);
    const platform::FileDescriptor folder(::open(volume.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!folder)
        return failure(errno);
    const auto list = platform::BtrfsSnapshotList::read(folder.get(), limits);
    if (!list)
        return failure(list.error());
    const auto quota = platform::BtrfsQuota::read(folder.get());
    platform::Array snapshots;
    for (const auto& each : list->snapshots) {
        platform::Dictionary snapshot{
            {SnapshotListKey::Name, each.name},
            {SnapshotListKey::Date, scheduling::dateOf(std::max<scheduling::Instant>(each.creationSeconds, 0))}};
        if (const auto size = quota.exclusiveBytes(each.objectIdentifier))
            snapshot.set(SnapshotListKey::Size, *size);
        snapshots.emplace_back(std::move(snapshot));
    }
    return platform::Dictionary{{SnapshotListKey::Snapshots, std::move(snapshots)},
                                {SnapshotListKey::Complete, list->isComplete}};
}

} // namespace helper
