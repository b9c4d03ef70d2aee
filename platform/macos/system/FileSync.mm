#include "platform/FileSync.h"

#include <cerrno>
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

namespace platform {

// A plain sync leaves the bytes in the disk's own memory. Some file systems, most of them networked, know nothing else.
bool makePermanent(int file)
{
    if (::fcntl(file, F_FULLFSYNC) == 0)
        return true;
    const bool isUnknown = errno == ENOTSUP || errno == ENOTTY || errno == EINVAL;
    return isUnknown && ::fsync(file) == 0;
}

int makeTemporary(char* path)
{
    const int file = ::mkstemp(path);
    if (file >= 0)
        ::fcntl(file, F_SETFD, FD_CLOEXEC);
    return file;
}

} // namespace platform
