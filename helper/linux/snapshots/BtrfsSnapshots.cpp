#include "helper/linux/snapshots/BtrfsSnapshots.h"

#include "helper/linux/snapshots/SnapshotListing.h"
#include "helper/linux/snapshots/SnapshotUnit.h"
#include "platform/linux/system/btrfs/SnapshotCreation.h"

#include <algorithm>

namespace helper {

std::vector<std::string> BtrfsSnapshots::volumesOf(const std::vector<std::string>& folders) const
{
    std::vector<std::string> found;
    for (const auto& folder : folders) {
        const auto volume = platform::btrfsVolumeOf(folder);
        if (volume && std::ranges::find(found, *volume) == found.end())
            found.push_back(*volume);
    }
    return found;
}

std::expected<LocalSnapshots::Made, std::string> BtrfsSnapshots::make(const std::string& volume)
{
    const auto path = makeSnapshotApart(volume);
    if (!path)
        return std::unexpected(path.error());
    return Made{*path, platform::identifierOfBtrfsSnapshot(*path)};
}

std::optional<std::string> BtrfsSnapshots::identifierOf(const std::string& path) const
{
    return platform::identifierOfBtrfsSnapshot(path);
}

std::expected<void, std::string> BtrfsSnapshots::remove(const std::string& path)
{
    return removeSnapshotApart(path);
}

platform::Result<platform::PropertyList> BtrfsSnapshots::list(const std::string& volume) const
{
    return listLocalSnapshots(volume);
}

} // namespace helper
