#include "platform/FileDescriptor.h"
#include "platform/Folder.h"
#include "platform/linux/system/backups/BackupRecord.h"
#include "platform/linux/system/conditions/ThreadCondition.h"
#include "platform/linux/system/queues/BlockedSignals.h"
#include "platform/RunningBackup.h"
#include "platform/SystemInformation.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <string>
#include <sys/file.h>
#include <sys/inotify.h>
#include <system_error>
#include <thread>

namespace platform {

namespace {

// Opening is told before the lock is taken.
constexpr std::array<std::chrono::milliseconds, 4> looksAfterOpening = {
    std::chrono::milliseconds(20), std::chrono::milliseconds(200), std::chrono::milliseconds(1000),
    std::chrono::milliseconds(3000)};

FileDescriptor openLockFile(const std::string& path)
{
    return FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644));
}

// By another description of the file.
bool isHeldElsewhere(const FileDescriptor& file)
{
    if (!file)
        return false;
    const bool isHeld = ::flock(file.get(), LOCK_SH | LOCK_NB) != 0 && errno == EWOULDBLOCK;
    if (!isHeld)
        ::flock(file.get(), LOCK_UN);
    return isHeld;
}

// Waits for the end of a lock on a thread of its own, which may outlive who wants to know. Closing its file tells.
void awaitRelease(const std::string& path, const std::shared_ptr<std::atomic<bool>>& isWaiting)
{
    if (isWaiting->exchange(true))
        return;
    try {
        const BlockedSignals blocked;
        std::thread([path, isWaiting] {
            const FileDescriptor file = openLockFile(path);
            while (file && ::flock(file.get(), LOCK_SH) != 0 && errno == EINTR) { }
            *isWaiting = false;
        }).detach();
    } catch (const std::system_error&) {
        *isWaiting = false;
    }
}

class LockFollower {
public:
    explicit LockFollower(ValueTeller<RunningBackup>& teller) : _teller(teller) { open(); }

private:
    void open()
    {
        (void)createFolder(systemPath("/var/run"));
        _file = openLockFile(_path);
        constexpr std::uint32_t mask = IN_OPEN | IN_CLOSE | IN_DELETE_SELF | IN_MOVE_SELF | IN_ATTRIB;
        _source = ConditionsThread::shared().watchFile(_path, mask, [this](const inotify_event& event) {
            if ((event.mask & (IN_DELETE_SELF | IN_MOVE_SELF | IN_IGNORED)) != 0 || !isSameFile())
                open();
            else
                look(0);
        });
        look(0);
    }

    // A file that is removed while it is open is told by its attributes alone.
    bool isSameFile() const { return ::access(_path.c_str(), F_OK) == 0; }

    void look(std::size_t looks)
    {
        const bool isHeld = isHeldElsewhere(_file);
        _teller.publish({isHeld});
        _next.reset();
        if (isHeld)
            awaitRelease(_path, _isWaiting);
        else if (looks < looksAfterOpening.size())
            _next = ConditionsThread::shared().runAfter(looksAfterOpening[looks], [this, looks] { look(looks + 1); });
    }

    ValueTeller<RunningBackup>& _teller;
    const std::string _path = systemPath(BackupLockFile);
    FileDescriptor _file;
    std::shared_ptr<std::atomic<bool>> _isWaiting = std::make_shared<std::atomic<bool>>(false);
    EventSource _source;
    EventSource _next;
};

} // namespace

bool isBackupRunning()
{
    const auto path = systemPath(BackupLockFile);
    return isHeldElsewhere(FileDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW)));
}

FollowedCondition<RunningBackup> followRunningBackup(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return ThreadCondition<RunningBackup, LockFollower>::follow(std::move(queue), std::move(handler));
}

} // namespace platform
