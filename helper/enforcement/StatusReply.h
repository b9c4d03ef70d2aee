#pragma once

#include "helper/enforcement/Journal.h"
#include "scheduling/Instant.h"

#include <string>
#include <vector>

namespace scheduling {
class Scheduler;
}

namespace helper {

// The reply to BRVMessageGetStatus. The program's name is empty when none is chosen.
platform::Dictionary statusReply(const scheduling::Scheduler& scheduler, scheduling::Now now, const Journal& journal,
                                 const std::string& program, const std::vector<std::string>& notes);

} // namespace helper
