#pragma once

#include "platform/BackupRunner.h"
#include "platform/FileDescriptor.h"

#include <optional>
#include <sys/types.h>

namespace platform {

// The program that runs a job.
struct LaunchedBackup {
    std::optional<pid_t> child; // this process's; nullopt when it is a unit
    FileDescriptor told;        // what it says: the lines of BackupRecord.h; never blocks
};

// Starts the program that runs the job. As a unit of the service manager where there is one, so that
// no end of this process or its unit ends it; nothing is known of its process then. Otherwise as a process in a session
// of its own, which is this one's child.
Result<LaunchedBackup> launchBackup(const BackupJob& job);

// The unit's name.
inline constexpr const char* BackupUnit = "com.zerkolin.brevane.backup.service";

} // namespace platform
