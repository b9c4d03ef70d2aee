// Stands in for the backup daemon: pretends to back up, now and then again and again, and logs what the daemon would.

#include "platform/SystemLog.h"
#include "shell/version/ZRKSystemVersionManager.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <string>
#include <string_view>
#include <sysexits.h>

namespace {

constexpr const char* usage =
    "usage: backupd [--every SECONDS]\n"
    "Logs a pretended backup under \"com.apple.TimeMachine\", and another one every 3600 seconds.\n"
    "  --every SECONDS   as often as that; 0 for one backup alone\n";
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

void backUp(DaemonLog& log, int number)
{
    log.message(defaultType, number == 0 ? "Starting manual backup" : "Starting automatic backup");
    log.message(debugType, "Mounting the backup volume");
    log.message(defaultType, "Thermal pressure level 0");
    log.message(defaultType, "Backing up to Backup: /Volumes/Backup/Backups.backupdb");
    log.message(defaultType, "Copied " + std::to_string(120 + 17 * number) + " files");
    if (number % 5 == 4)
        log.message(errorType, "Could not copy /Users/Shared/locked: permission denied");
    log.message(defaultType, "Backup completed successfully.");
}

long secondsOfArguments(int count, char** arguments)
{
    if (count == 1)
        return 3600;
    char* end = nullptr;
    const long seconds =
        count == 3 && std::string_view(arguments[1]) == "--every" ? std::strtol(arguments[2], &end, 10) : -1;
    return end && *end == '\0' && end != arguments[2] ? seconds : -1;
}

} // namespace

int main(int argc, char** argv)
{
    const long seconds = secondsOfArguments(argc, argv);
    if (seconds < 0) {
        std::fputs(usage, stderr);
        return EX_USAGE;
    }
    DaemonLog log;
    for (int number = 0;; ++number) {
        backUp(log, number);
        if (seconds == 0)
            return EX_OK;
        timespec pause{seconds, 0};
        while (::nanosleep(&pause, &pause) != 0 && errno == EINTR) { }
    }
}
