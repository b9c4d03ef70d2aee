#include "helper/linux/snapshots/SnapshotUnit.h"

#include "helper/linux/snapshots/LocalSnapshot.h"
#include "platform/linux/system/btrfs/SnapshotCreation.h"
#include "platform/linux/system/processes/ServiceUnit.h"

#include <array>
#include <cstdlib>

namespace helper {

namespace {

// What this program prints in the unit; what it complains of is in the log.
std::expected<std::string, std::string> runApart(const std::string& option, const std::string& path)
{
    const auto process = platform::startApart({}, {option, path});
    if (!process)
        return std::unexpected(textOfSnapshotFailure(process.error()));
    std::string output;
    std::array<char, 4096> buffer{};
    while (const auto count = (*process)->read(buffer))
        output.append(buffer.data(), count);
    if (const int status = (*process)->waitUntilExit(); status != EXIT_SUCCESS)
        return std::unexpected("its unit ended with status " + std::to_string(status));
    return output.substr(0, output.find('\n'));
}

} // namespace

std::expected<std::string, std::string> makeSnapshotApart(const std::string& volume)
{
    if (platform::isServiceUnit())
        return runApart("--snapshot", volume);
    auto made = makeLocalSnapshot(volume);
    return made ? std::expected<std::string, std::string>(std::move(*made))
                : std::unexpected(textOfSnapshotFailure(made.error()));
}

std::expected<void, std::string> removeSnapshotApart(const std::string& path)
{
    if (platform::isServiceUnit()) {
        if (const auto done = runApart("--remove-snapshot", path); !done)
            return std::unexpected(done.error());
        return {};
    }
    if (const auto removed = platform::removeBtrfsSnapshot(path); !removed)
        return std::unexpected(textOfSnapshotFailure(removed.error()));
    return {};
}

} // namespace helper
