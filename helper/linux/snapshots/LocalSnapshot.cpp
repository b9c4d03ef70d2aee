#include "helper/linux/snapshots/LocalSnapshot.h"

#include "platform/linux/system/btrfs/SnapshotCreation.h"

#include <cerrno>
#include <ctime>
#include <system_error>

namespace helper {

namespace {

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

} // namespace

std::expected<std::string, int> makeLocalSnapshot(const std::string& volume)
{
    const auto time = presentTime();
    auto made = platform::createBtrfsSnapshot(volume, time);
    for (int number = 2; !made && made.error() == EEXIST && number <= snapshotsInOneSecond; ++number)
        made = platform::createBtrfsSnapshot(volume, time + "-" + std::to_string(number));
    if (made)
        tellOfSnapshots();
    return made;
}

std::string textOfSnapshotFailure(int code)
{
    return code == ENOTTY ? "it is not the top of a btrfs volume" : std::generic_category().message(code);
}

} // namespace helper
