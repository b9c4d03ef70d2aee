#include "helper/snapshots/SnapshotCommand.h"

#include "helper/snapshots/LocalSnapshot.h"

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

} // namespace

std::optional<int> runSnapshotCommand(int count, const char* const* arguments)
{
    if (count != 3 || std::string_view(arguments[1]) != "--snapshot")
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
