#include "platform/linux/system/btrfs/SnapshotCreation.h"

#include "platform/FileDescriptor.h"

#include <algorithm>
#include <btrfsutil.h>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <sys/stat.h>

namespace platform {

namespace {

// Whoever may write to the volume must not lead us elsewhere with a link.
FileDescriptor openSnapshotFolder(const FileDescriptor& volume)
{
    if (::mkdirat(volume.get(), BtrfsSnapshotFolder, 0755) != 0 && errno != EEXIST)
        return {};
    return FileDescriptor(::openat(volume.get(), BtrfsSnapshotFolder, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
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
    return (volume.ends_with('/') ? volume : volume + "/") + BtrfsSnapshotFolder + "/" + name;
}

std::optional<std::string> btrfsVolumeOf(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> resolved(::realpath(path.c_str(), nullptr), &std::free);
    std::string folder = resolved ? resolved.get() : "";
    while (!folder.empty() && btrfs_util_is_subvolume(folder.c_str()) != BTRFS_UTIL_OK)
        folder = folder == "/" ? "" : folder.substr(0, std::max<std::size_t>(folder.rfind('/'), 1));
    return folder.empty() ? std::nullopt : std::optional(folder);
}

std::optional<std::string> identifierOfBtrfsSnapshot(const std::string& path)
{
    const FileDescriptor folder(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct btrfs_util_subvolume_info information{};
    if (!folder || btrfs_util_is_subvolume_fd(folder.get()) != BTRFS_UTIL_OK
        || btrfs_util_subvolume_info_fd(folder.get(), 0, &information) != BTRFS_UTIL_OK)
        return std::nullopt;
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const std::uint8_t byte : information.uuid) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

std::expected<void, int> removeBtrfsSnapshot(const std::string& path)
{
    if (btrfs_util_delete_subvolume(path.c_str(), 0) != BTRFS_UTIL_OK)
        return std::unexpected(errno);
    return {};
}

} // namespace platform
