#include "helper/linux/snapshots/SnapshotCommand.h"

#include "helper/linux/snapshots/LocalSnapshot.h"
#include "platform/linux/system/btrfs/SnapshotCreation.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <sysexits.h>

namespace helper {

namespace {

int statusOfFailure(int code)
{
    if (code == EPERM || code == EACCES)
        return EX_NOPERM;
    return code == ENOTTY || code == ENOENT || code == ENOTDIR ? EX_DATAERR : EX_CANTCREAT;
}

// Only what was made by the other command.
bool isInSnapshotFolder(std::string_view path)
{
    const auto name = path.rfind('/');
    if (name == std::string_view::npos)
        return false;
    const auto folder = path.substr(0, name);
    const auto parent = folder.rfind('/');
    return parent != std::string_view::npos && folder.substr(parent + 1) == platform::BtrfsSnapshotFolder;
}

int removeSnapshot(const char* path)
{
    if (!isInSnapshotFolder(path)) {
        std::fprintf(stderr, "'%s' is no snapshot of Brevane's.\n", path);
        return EX_DATAERR;
    }
    if (const auto removed = platform::removeBtrfsSnapshot(path); !removed) {
        std::fprintf(stderr, "Could not remove the snapshot '%s': %s.\n", path,
                     textOfSnapshotFailure(removed.error()).c_str());
        return statusOfFailure(removed.error());
    }
    return EXIT_SUCCESS;
}

} // namespace

std::optional<int> runSnapshotCommand(int count, const char* const* arguments)
{
    const std::string_view command = count == 3 ? arguments[1] : "";
    if (command == "--remove-snapshot")
        return removeSnapshot(arguments[2]);
    if (command != "--snapshot")
        return std::nullopt;
    const auto made = makeLocalSnapshot(arguments[2]);
    if (!made) {
        std::fprintf(stderr, "Could not make a snapshot of '%s': %s.\n", arguments[2],
                     textOfSnapshotFailure(made.error()).c_str());
        return statusOfFailure(made.error());
    }
    std::printf("%s\n", made->c_str());
    if (!tellOfSnapshots())
        std::fputs("Other programs could not be told of the snapshot: there is no system bus.\n", stderr);
    return EXIT_SUCCESS;
}

} // namespace helper
