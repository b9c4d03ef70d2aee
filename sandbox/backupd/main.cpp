// Stands in for the backup daemon: pretends to back up, now and then again and again, logs what the daemon would, and
// holds the lock by which others know that a backup is running.

#include "platform/FileDescriptor.h"
#include "platform/Folder.h"
#include "platform/SystemInformation.h"
#include "platform/SystemLog.h"
#include "version/ZRKSystemVersionManager.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/file.h>
#include <sysexits.h>
#include <unistd.h>

namespace {

constexpr const char* usage =
    "usage: backupd [--every SECONDS] [--lasting SECONDS]\n"
    "Logs a pretended backup under \"com.apple.TimeMachine\", and another one every 3600 seconds.\n"
    "  --every SECONDS     as often as that; 0 for one backup alone\n"
    "  --lasting SECONDS   how long a backup runs (0); the file \"/var/run/backupd.lock\" is locked meanwhile\n";
constexpr std::uint8_t defaultType = 0;
constexpr std::uint8_t debugType = 2;
constexpr std::uint8_t errorType = 16;

// The log of the system version at hand, under the daemon's names.
class DaemonLog {
public:
    DaemonLog()
    {
        static char sender[] = "com.apple.backupd";
        program_invocation_short_name = sender; // the older log tells senders by it
        if (ZRKSystemVersionManager::sharedManager().runningAtLeast(2))
            _log = platform::SystemLog::create("com.apple.TimeMachine", "General");
        else
            _legacyLog = platform::LegacyLog::open("com.apple.backupd");
    }

    void message(std::uint8_t type, const std::string& text)
    {
        if (_log)
            _log->message(type, text);
        else if (type != debugType)
            _legacyLog->send(type == errorType ? "Error" : "Warning", text);
    }

private:
    std::unique_ptr<platform::SystemLog> _log;
    std::unique_ptr<platform::LegacyLog> _legacyLog;
};

void rest(long seconds)
{
    timespec pause{seconds, 0};
    while (::nanosleep(&pause, &pause) != 0 && errno == EINTR) { }
}

// Waits for another backup that is running. Held until the descriptor is closed; none where no file can be made.
platform::FileDescriptor lockOfBackup()
{
    (void)platform::createFolder(platform::systemPath("/var/run"));
    const auto path = platform::systemPath("/var/run/backupd.lock");
    platform::FileDescriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (!file || ::flock(file.get(), LOCK_EX) != 0)
        std::perror(path.c_str());
    return file;
}

void backUp(DaemonLog& log, int number, long lasting)
{
    const auto lock = lockOfBackup();
    log.message(defaultType, number == 0 ? "Starting manual backup" : "Starting automatic backup");
    log.message(debugType, "Mounting the backup volume");
    log.message(defaultType, "Thermal pressure level 0");
    log.message(defaultType, "Backing up to Backup: /Volumes/Backup/Backups.backupdb");
    rest(lasting);
    log.message(defaultType, "Copied " + std::to_string(120 + 17 * number) + " files");
    if (number % 5 == 4)
        log.message(errorType, "Could not copy /Users/Shared/locked: permission denied");
    log.message(defaultType, "Backup completed successfully.");
}

struct Times {
    long every = 3600; // seconds, as is the other
    long lasting = 0;
};

std::optional<Times> timesOfArguments(int count, char** arguments)
{
    Times times;
    for (int index = 1; index < count; index += 2) {
        const std::string_view name = arguments[index];
        if (index + 1 == count || (name != "--every" && name != "--lasting"))
            return std::nullopt;
        char* end = nullptr;
        const long seconds = std::strtol(arguments[index + 1], &end, 10);
        if (seconds < 0 || *end != '\0' || end == arguments[index + 1])
            return std::nullopt;
        (name == "--every" ? times.every : times.lasting) = seconds;
    }
    return times;
}

} // namespace

int main(int argc, char** argv)
{
    const auto times = timesOfArguments(argc, argv);
    if (!times) {
        std::fputs(usage, stderr);
        return EX_USAGE;
    }
    DaemonLog log;
    for (int number = 0;; ++number) {
        backUp(log, number, times->lasting);
        if (times->every == 0)
            return EX_OK;
        rest(times->every);
    }
}
