#pragma once

#include <expected>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform {

// Starts a program, found along PATH, that outlives this one and is not waited for. No shell is involved. False when
// it cannot be started.
bool launch(const std::vector<std::string>& command);

// The same, for a caller that waits for the process, as it has to in the end. The failure is an errno value.
struct StandardStreams {
    int input = -1; // descriptors for them; -1 for this process's own
    int output = -1;
    int error = -1;
};
std::expected<pid_t, int> spawn(const std::vector<std::string>& command, const StandardStreams& streams = {});
// Waits for it, on a thread of its own.
void reap(pid_t child);

} // namespace platform
