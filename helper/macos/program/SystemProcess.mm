#include "helper/program/SystemProcess.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/HelperOptions.h"
#include "helper/macos/timemachine/TimeMachineSnapshots.h"
#include "platform/Authorization.h"
#include "platform/Process.h"
#include "platform/SystemInformation.h"
#include "protocol/Messages.h"

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <sysexits.h>
#include <vector>

namespace helper {

namespace {

int makeSnapshot(const char* volume)
{
    const auto made = TimeMachineSnapshots().make(volume);
    if (!made) {
        std::fprintf(stderr, "Could not make a snapshot of '%s': %s.\n", volume, made.error().c_str());
        return EX_CANTCREAT;
    }
    std::printf("%s\n", made->path.c_str());
    return EXIT_SUCCESS;
}

int removeSnapshot(const char* path)
{
    if (const auto removed = TimeMachineSnapshots().remove(path); !removed) {
        std::fprintf(stderr, "Could not remove the snapshot '%s': %s.\n", path, removed.error().c_str());
        return EX_CANTCREAT;
    }
    tellOfSnapshots();
    return EXIT_SUCCESS;
}

// Whether the options are understood, the version is known, and the database of rights can be read.
int checkSelf(int count, const char* const* arguments)
{
    if (!HelperOptions::inArguments(count - 1, arguments + 1)) {
        std::fputs("The arguments are not understood.\n", stderr);
        return EX_USAGE;
    }
    if (platform::bundleVersion().empty()) {
        std::fputs("The program does not name its version.\n", stderr);
        return EX_CONFIG;
    }
    const auto right = platform::Authorization::right(BRVRightModifySettings1);
    if (!right && right.error() != platform::Authorization::Denied) {
        std::fprintf(stderr, "The database of rights cannot be read (%d).\n", static_cast<int>(right.error()));
        return EX_UNAVAILABLE;
    }
    return EXIT_SUCCESS;
}

} // namespace

std::optional<int> runSystemCommand(int count, char** arguments)
{
    const std::string_view command = count > 1 ? arguments[1] : "";
    if (command == "--self-check")
        return checkSelf(count, arguments);
    if (count == 3 && command == "--snapshot")
        return makeSnapshot(arguments[2]);
    if (count == 3 && command == "--remove-snapshot")
        return removeSnapshot(arguments[2]);
    return std::nullopt;
}

void prepareProcess() { } // the allocator gives memory back by itself

const char* const lossOfService = "Another program has the service, or launchd does not know it.";

// launchd starts what stands at the path now.
int startNextVersion(char**)
{
    ZRKLogMessage(LogLevelInfo, "The new version is to take over.");
    return EXIT_SUCCESS;
}

// Otherwise launchd would start again and again what is gone.
void leaveService()
{
    const std::string label = BRVSchedulerServiceName;
    std::vector<std::string> words{"remove", label};
    if (@available(macOS 10.10, *))
        words = {"bootout", "system/" + label};
    const auto process = platform::Process::start("/bin/launchctl", words);
    if (!process || (*process)->waitUntilExit() != EXIT_SUCCESS)
        ZRKLogMessage(LogLevelError, "launchd still has the service '%@'.", {label});
}

} // namespace helper
