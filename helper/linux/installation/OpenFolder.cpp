#include "helper/linux/installation/OpenFolder.h"

#include <cerrno>
#include <dirent.h>
#include <fcntl.h>
#include <memory>
#include <string_view>
#include <sys/sysmacros.h>

namespace helper {

using platform::FileDescriptor;

namespace {

constexpr int folderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

using Directory = std::unique_ptr<DIR, decltype([](DIR* directory) { ::closedir(directory); })>;

} // namespace

std::expected<OpenFolder, int> OpenFolder::open(int folder, const char* name)
{
    FileDescriptor descriptor(::openat(folder, name, folderFlags));
    struct statx status{};
    if (!descriptor || ::statx(descriptor.get(), "", AT_EMPTY_PATH, STATX_MNT_ID, &status) != 0)
        return std::unexpected(errno);
    // Without its number a mount of the same device could not be told from a folder.
    if ((status.stx_mask & STATX_MNT_ID) == 0)
        return std::unexpected(ENOSYS);
    const Place place{::makedev(status.stx_dev_major, status.stx_dev_minor), status.stx_mnt_id};
    return OpenFolder(std::move(descriptor), place);
}

std::expected<OpenFolder, int> OpenFolder::at(const std::string& path)
{
    return open(AT_FDCWD, path.c_str());
}

std::expected<OpenFolder, int> OpenFolder::folder(const std::string& name) const
{
    auto found = open(descriptor(), name.c_str());
    if (found && found->_place != _place)
        return std::unexpected(EXDEV);
    return found;
}

std::expected<OpenFolder, int> OpenFolder::madeFolder(const std::string& name) const
{
    if (::mkdirat(descriptor(), name.c_str(), 0755) != 0 && errno != EEXIST)
        return std::unexpected(errno);
    return folder(name);
}

std::expected<std::vector<OpenFolder::Entry>, int> OpenFolder::entries() const
{
    const int again = ::openat(descriptor(), ".", folderFlags);
    const Directory directory(again < 0 ? nullptr : ::fdopendir(again));
    if (!directory)
        return std::unexpected(errno);
    std::vector<Entry> found;
    for (errno = 0; const auto* entry = ::readdir(directory.get()); errno = 0) {
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..")
            found.push_back({std::string(name), holdsFolder(entry->d_name)});
    }
    if (errno != 0)
        return std::unexpected(errno);
    return found;
}

bool OpenFolder::holdsFolder(const std::string& name) const
{
    struct stat status{};
    return ::fstatat(descriptor(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

} // namespace helper
