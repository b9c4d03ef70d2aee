#pragma once

#include "platform/Condition.h"

#include <string>
#include <vector>

namespace platform {

// The programs that keep the computer from falling asleep, or its user from counting as idle. This process is none.
struct SleepPreventers {
    bool isKnown = false;           // otherwise the system tells nothing, and none are assumed
    std::vector<std::string> names; // as they call themselves; sorted, each once

    bool operator==(const SleepPreventers&) const = default;
};

FollowedCondition<SleepPreventers> followSleepPreventers(std::shared_ptr<Queue> queue, std::function<void()> handler);

} // namespace platform
