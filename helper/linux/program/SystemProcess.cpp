#include "helper/program/SystemProcess.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/linux/snapshots/SnapshotCommand.h"
#include "helper/linux/update/DownloadUnit.h"
#include "helper/linux/update/SelfCheck.h"
#include "helper/linux/update/UpdateWatch.h"
#include "platform/SystemInformation.h"

#include <cstdio>
#include <malloc.h>
#include <sysexits.h>
#include <unistd.h>

namespace helper {

std::optional<int> runSystemCommand(int count, char** arguments)
{
    if (const auto status = runSnapshotCommand(count, arguments))
        return status;
    if (const auto status = runSelfCheckCommand(count, arguments))
        return status;
    if (const auto status = runDownloadCommand(count, arguments))
        return status;
    return runUpdateWatchCommand(count, arguments);
}

// The C library raises the size from which memory is given back to the system with every big block that it sees; one
// big message would make the next ones stay.
void prepareProcess()
{
    ::mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    ::mallopt(M_TRIM_THRESHOLD, 1024 * 1024);
    ::mallopt(M_ARENA_MAX, 2);
}

const char* const lossOfService = "The system bus is gone, or another program has taken the name.";

// Returns when it cannot; then the watch puts this version back.
int startNextVersion(char** arguments)
{
    const auto program = platform::systemPath("/Library/Brevane/com.zerkolin.brevane.scheduler");
    ZRKLogMessage(LogLevelInfo, "The new version takes over.");
    ::execv(program.c_str(), arguments);
    constexpr const char* text = "The new version cannot be started.";
    ZRKLogMessage(LogLevelError, "%@", {text});
    std::fprintf(stderr, "com.zerkolin.brevane.scheduler: %s\n", text);
    return EX_TEMPFAIL;
}

void leaveService() { } // a unit whose process ends well is not started again

} // namespace helper
