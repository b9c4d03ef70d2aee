#include "platform/Folder.h"

#include <cerrno>
#include <sys/stat.h>

namespace platform {

std::expected<void, int> createFolder(const std::string& path)
{
    // Any of them may fail, as on a read-only file system, as long as the folder is there in the end.
    int failure = ENOENT;
    for (auto end = path.find('/', 1);; end = path.find('/', end + 1)) {
        if (::mkdir(path.substr(0, end).c_str(), 0777) != 0)
            failure = errno;
        if (end == std::string::npos)
            break;
    }
    struct stat status{};
    if (::stat(path.c_str(), &status) != 0)
        return std::unexpected(failure);
    if (!S_ISDIR(status.st_mode))
        return std::unexpected(ENOTDIR);
    return {};
}

} // namespace platform
