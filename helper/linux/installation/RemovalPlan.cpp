#include "helper/linux/installation/RemovalPlan.h"

#include "helper/SystemError.h"
#include "platform/Folder.h"

#include <array>
#include <cerrno>
#include <climits>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace helper {

using platform::Result;

namespace {

constexpr std::uint64_t fixed = STATX_ATTR_IMMUTABLE | STATX_ATTR_APPEND;

std::unexpected<platform::Error> notRemoved(int code, const std::string& path)
{
    return std::unexpected(systemError(code, "'" + path + "' could not be removed."));
}

bool isGone(int code)
{
    return code == ENOENT || code == ENOTDIR;
}

// 0 when the name can be removed from its folder, or is not there.
int obstacleAt(const std::string& path)
{
    struct statx status{};
    if (::statx(AT_FDCWD, path.c_str(), AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT, STATX_TYPE, &status) != 0)
        return isGone(errno) ? 0 : errno;
    if (S_ISDIR(status.stx_mode))
        return EISDIR;
    if ((status.stx_attributes & STATX_ATTR_MOUNT_ROOT) != 0)
        return EBUSY;
    if ((status.stx_attributes & fixed) != 0)
        return EPERM;
    const auto folder = platform::parentOf(path);
    if (::statx(AT_FDCWD, folder.c_str(), 0, STATX_TYPE, &status) != 0)
        return errno;
    if ((status.stx_attributes & fixed) != 0)
        return EPERM;
    return ::faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0 ? 0 : errno;
}

bool leadsTo(const std::string& path, const std::string& target)
{
    std::array<char, PATH_MAX> found{};
    const auto length = ::readlink(path.c_str(), found.data(), found.size());
    return length >= 0 && std::string_view(found.data(), static_cast<std::size_t>(length)) == target;
}

// Remembers the first thing that could not be removed, and goes on.
class Remover {
public:
    void removeFile(const std::string& path)
    {
        if (::unlink(path.c_str()) != 0 && !isGone(errno))
            keep(path);
    }

    void removeFolder(const std::string& path)
    {
        if (::rmdir(path.c_str()) != 0 && !isGone(errno) && errno != ENOTEMPTY && errno != EEXIST && errno != EBUSY)
            keep(path);
    }

    Result<void> result() const { return _result; }

private:
    void keep(const std::string& path)
    {
        if (_result)
            _result = notRemoved(errno, path);
    }

    Result<void> _result;
};

} // namespace

Result<void> RemovalPlan::check() const
{
    for (const auto& file : _files) {
        if (const auto obstacle = obstacleAt(file); obstacle != 0)
            return notRemoved(obstacle, file);
    }
    for (const auto& [link, target] : _links) {
        const auto obstacle = leadsTo(link, target) ? obstacleAt(link) : 0;
        if (obstacle != 0)
            return notRemoved(obstacle, link);
    }
    return {};
}

Result<void> RemovalPlan::carryOut() const
{
    Remover remover;
    for (const auto& file : _files)
        remover.removeFile(file);
    for (const auto& [link, target] : _links) {
        if (leadsTo(link, target))
            remover.removeFile(link);
    }
    for (const auto& folder : _folders)
        remover.removeFolder(folder);
    return remover.result();
}

} // namespace helper
