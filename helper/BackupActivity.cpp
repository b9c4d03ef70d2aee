#include "helper/BackupActivity.h"

#include "platform/FileDescriptor.h"
#include "platform/SystemInformation.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>

namespace helper {

bool isBackupRunning()
{
    auto path = platform::systemPath("/var/run/backupd.lock");
    const platform::FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW));
    return file && ::flock(file.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
}

} // namespace helper
