#pragma once

#include "platform/Error.h"

#include <optional>
#include <string>
#include <sys/types.h>

namespace platform {

// Starts the program that runs the job of that identifier. As a unit of the service manager where there is one, so that
// no end of this process or its unit ends it; nothing is known of its process then. Otherwise as a process in a session
// of its own, which is this one's child.
Result<std::optional<pid_t>> launchBackup(const std::string& identifier);

// The unit's name.
inline constexpr const char* BackupUnit = "com.zerkolin.brevane.backup.service";

} // namespace platform
