#include "helper/linux/backupd/BackupSession.h"

#include "helper/linux/backupd/BackupCommand.h"
#include "platform/Clock.h"
#include "platform/Folder.h"
#include "platform/Root.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sysexits.h>
#include <system_error>
#include <unistd.h>

namespace helper {

namespace {

constexpr int niceness = 10;

// Whoever only looks whether a backup runs holds the lock for a moment.
constexpr int lockTries = 20;
constexpr timespec lockPause{0, 100'000'000};

void goBehindOtherWork()
{
    constexpr int ofProcess = 1;
    constexpr int lowestOfUsual = (2 << 13) | 7;
    ::setpriority(PRIO_PROCESS, 0, niceness);
    ::syscall(SYS_ioprio_set, ofProcess, 0, lowestOfUsual);
}

std::vector<std::string> plainEnvironment()
{
    return {"PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin",
            "HOME=" + (platform::usesSandboxStore() || ::geteuid() != 0 ? platform::homeDirectory() : "/root"),
            "LANG=C.UTF-8"};
}

} // namespace

int BackupSession::run()
{
    const auto job = platform::decodedBackupJob(readInput());
    if (!job || job->identifier != _identifier)
        return EX_CONFIG;
    if (!takeLock()) {
        _log.message(BackupLog::Error, "Another backup is running.");
        return EX_TEMPFAIL;
    }
    if (job->beginBefore && platform::readClocks().sinceBoot > *job->beginBefore) {
        _log.message(BackupLog::Error, "The backup came to life too late, and is not made.");
        return EX_TEMPFAIL;
    }
    goBehindOtherWork();
    (void)platform::createFolder(platform::systemPath("/var/db/brevane/programs"));
    _record = {.identifier = _identifier,
               .process = ::getpid(),
               .processStart = platform::startOfProcess(::getpid()),
               .began = ::time(nullptr),
               .status = {}};
    record(std::nullopt);
    const int status = runCommands(*job);
    record(status);
    return status < 0 ? 128 - status : status;
}

platform::Data BackupSession::readInput()
{
    platform::Data bytes;
    std::array<std::uint8_t, 65536> part;
    for (ssize_t count = 0; (count = ::read(STDIN_FILENO, part.data(), part.size())) > 0;)
        bytes.insert(bytes.end(), part.begin(), part.begin() + count);
    return bytes;
}

bool BackupSession::takeLock()
{
    (void)platform::createFolder(platform::systemPath("/var/run"));
    const auto path = platform::systemPath(platform::BackupLockFile);
    _lock.reset(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0644));
    for (int attempt = 0; _lock && attempt < lockTries; ++attempt) {
        if (::flock(_lock.get(), LOCK_EX | LOCK_NB) == 0)
            return true;
        ::nanosleep(&lockPause, nullptr);
    }
    return false;
}

int BackupSession::runCommands(const platform::BackupJob& job)
{
    auto environment = plainEnvironment();
    environment.insert(environment.end(), job.environment.begin(), job.environment.end());
    const BackupConfinement confinement(job.confinedTo,
                                        {platform::systemPath("/var/db/brevane/programs"), "/tmp", "/var/tmp"});
    int status = 0;
    for (const auto& command : job.commands) {
        status = runBackupCommand(command, environment, confinement, _log);
        if (status != 0)
            break;
    }
    return status;
}

void BackupSession::record(std::optional<int> status)
{
    _record.status = status;
    // Whoever has started it may be gone.
    const auto line =
        status ? platform::lineOfEnd(*status) : platform::lineOfBegin(_record.process, _record.processStart);
    [[maybe_unused]] const auto told = ::write(STDOUT_FILENO, line.data(), line.size());
    if (const auto written = platform::writeBackupRecord(_record); !written)
        _log.message(BackupLog::Error,
                     "What became of the backup could not be written down. "
                         + std::generic_category().message(written.error()) + ".");
}

} // namespace helper
