#pragma once

#include "platform/Error.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace helper {

// Has a version's program, which is not in place yet, say by itself whether it can work here: it is run with
// "--self-check" and the helper's arguments. EBADMSG when it does not say so with the status 0 within the limit; what
// it printed is logged.
platform::Result<void> checkProgram(const std::string& program, const std::vector<std::string>& arguments,
                                    std::chrono::milliseconds limit);

// "--self-check" and the helper's arguments: whether this program understands them, finds the list of its version and
// can use the system bus. Changes nothing, and prints what is amiss. The exit status; nullopt when the arguments ask
// for something else.
std::optional<int> runSelfCheckCommand(int count, const char* const* arguments);

} // namespace helper
