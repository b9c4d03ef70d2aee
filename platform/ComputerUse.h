#pragma once

#include "platform/Condition.h"

#include <chrono>
#include <optional>

namespace platform {

// Who uses the computer, and whether anybody can.
struct ComputerUse {
    bool isKnown = false; // otherwise the system tells nothing, and somebody is assumed to use it

    // Nobody is logged in at it (from elsewhere does not count), or its lid is closed and it has no other display.
    bool isPassive = false;

    // Since when nobody has used it, also from elsewhere, as a time since the machine was started that counts sleep
    // (ClockReading::sinceBoot). Nothing while somebody does. A moment in the past may become known late: desktops tell
    // after minutes.
    std::optional<std::chrono::nanoseconds> unusedSince;

    bool operator==(const ComputerUse&) const = default;
};

FollowedCondition<ComputerUse> followComputerUse(std::shared_ptr<Queue> queue, std::function<void()> handler);

} // namespace platform
