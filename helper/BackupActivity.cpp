#include "helper/BackupActivity.h"

#include "platform/FileDescriptor.h"
#include "platform/SystemInformation.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace helper {

namespace {

platform::FileDescriptor openLock()
{
    const auto path = platform::systemPath("/var/run/backupd.lock");
    return platform::FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
}

} // namespace

bool isBackupRunning()
{
    const auto file = openLock();
    return file && ::flock(file.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

void waitForBackup()
{
    const auto file = openLock();
    while (file && ::flock(file.get(), LOCK_SH) != 0 && errno == EINTR) { }
}

} // namespace helper
