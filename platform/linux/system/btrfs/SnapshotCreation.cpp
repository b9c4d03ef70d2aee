#include "platform/linux/system/btrfs/SnapshotCreation.h"

#include "platform/FileDescriptor.h"

#include <btrfsutil.h>
#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>

namespace platform {

namespace {

constexpr const char* SnapshotFolder = ".brevane-snapshots";

// Whoever may write to the volume must not lead us elsewhere with a link.
FileDescriptor openSnapshotFolder(const FileDescriptor& volume)
{
    if (::mkdirat(volume.get(), SnapshotFolder, 0755) != 0 && errno != EEXIST)
        return {};
    return FileDescriptor(::openat(volume.get(), SnapshotFolder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
}

} // namespace

std::expected<std::string, int> createBtrfsSnapshot(const std::string& volume, const std::string& name)
{
    const FileDescriptor source(::open(volume.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!source)
        return std::unexpected(errno);
    if (const auto status = btrfs_util_is_subvolume_fd(source.get()); status != BTRFS_UTIL_OK)
        return std::unexpected(status == BTRFS_UTIL_ERROR_STATFS_FAILED ? errno : ENOTTY);
    const auto folder = openSnapshotFolder(source);
    if (!folder)
        return std::unexpected(errno);
    const auto status = btrfs_util_create_snapshot_fd2(source.get(), folder.get(), name.c_str(),
                                                       BTRFS_UTIL_CREATE_SNAPSHOT_READ_ONLY, nullptr, nullptr);
    if (status != BTRFS_UTIL_OK)
        return std::unexpected(errno);
    return (volume.ends_with('/') ? volume : volume + "/") + SnapshotFolder + "/" + name;
}

} // namespace platform
