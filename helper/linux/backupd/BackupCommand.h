#pragma once

#include "helper/linux/backupd/BackupConfinement.h"
#include "helper/linux/backupd/BackupLog.h"

#include <string>
#include <vector>

namespace helper {

inline constexpr int ExitCannotRun = 126;
inline constexpr int ExitNotFound = 127;

// Runs a program to its end, confined, with an environment of its own and nothing to read, and logs what it prints. Its
// exit status, or the negative number of the signal that ended it. It ends with this process, and what it leaves behind
// in the background is not waited for. For a process of one thread.
int runBackupCommand(const std::vector<std::string>& command, const std::vector<std::string>& environment,
                     const BackupConfinement& confinement, BackupLog& log);

} // namespace helper
