#include "platform/Folder.h"

#include "platform/FileDescriptor.h"
#include "platform/FileSync.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <ftw.h>
#include <sys/stat.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr int openFolders = 16; // beyond that depth they are closed and opened again

thread_local int firstRemovalFailure = 0; // nftw hands its function nothing of ours

int removeEntry(const char* path, const struct stat*, int, struct FTW*)
{
    if (std::remove(path) != 0 && firstRemovalFailure == 0)
        firstRemovalFailure = errno;
    return 0;
}

} // namespace

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

std::expected<void, int> removeFolder(const std::string& path)
{
    firstRemovalFailure = 0;
    if (::nftw(path.c_str(), removeEntry, openFolders, FTW_DEPTH | FTW_PHYS | FTW_MOUNT) != 0)
        return std::unexpected(errno);
    if (firstRemovalFailure != 0)
        return std::unexpected(firstRemovalFailure);
    return {};
}

std::expected<void, int> syncFolder(const std::string& path)
{
    const FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!descriptor || !makePermanent(descriptor.get()))
        return std::unexpected(errno);
    return {};
}

} // namespace platform
