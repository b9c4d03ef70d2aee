#include "helper/snapshots/SnapshotCommand.h"

#include "platform/DistributedNotifications.h"
#include "platform/linux/system/btrfs/SnapshotCreation.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <string_view>
#include <sysexits.h>

namespace helper {

namespace {

constexpr const char* snapshotNotification = "com.zerkolin.brevane.snapshot";
constexpr int snapshotsInOneSecond = 100;

// In UTC, so that no clock change makes two snapshots of one name.
std::string presentTime()
{
    const std::time_t now = std::time(nullptr);
    std::tm parts{};
    ::gmtime_r(&now, &parts);
    char text[32];
    return {text, std::strftime(text, sizeof text, "%Y-%m-%d-%H%M%S", &parts)};
}

std::expected<std::string, int> makeSnapshot(const std::string& volume)
{
    const auto time = presentTime();
    auto made = platform::createBtrfsSnapshot(volume, time);
    for (int number = 2; !made && made.error() == EEXIST && number <= snapshotsInOneSecond; ++number)
        made = platform::createBtrfsSnapshot(volume, time + "-" + std::to_string(number));
    return made;
}

int statusOfFailure(int code)
{
    if (code == EPERM || code == EACCES)
        return EX_NOPERM;
    return code == ENOTTY || code == ENOENT || code == ENOTDIR ? EX_DATAERR : EX_CANTCREAT;
}

const char* textOfFailure(int code)
{
    return code == ENOTTY ? "it is not the top of a btrfs volume" : std::strerror(code);
}

} // namespace

std::optional<int> runSnapshotCommand(int count, const char* const* arguments)
{
    if (count != 3 || std::string_view(arguments[1]) != "--snapshot")
        return std::nullopt;
    const auto made = makeSnapshot(arguments[2]);
    if (!made) {
        std::fprintf(stderr, "Could not make a snapshot of '%s': %s.\n", arguments[2], textOfFailure(made.error()));
        return statusOfFailure(made.error());
    }
    std::printf("%s\n", made->c_str());
    if (!platform::postDistributedNotification(snapshotNotification))
        std::fputs("Other programs could not be told of the snapshot: there is no system bus.\n", stderr);
    return EXIT_SUCCESS;
}

} // namespace helper
