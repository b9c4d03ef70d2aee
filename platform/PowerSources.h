#pragma once

#include "platform/Condition.h"

#include <memory>
#include <optional>

namespace platform {

// Whether the machine can run on a battery of its own. nullopt when the system gives no information about power
// sources.
std::optional<bool> supportsBatteryPower();

struct PowerState {
    bool isKnown = false;   // otherwise the system gives no information, and mains is assumed
    bool onBattery = false; // and not at the mains

    bool operator==(const PowerState&) const = default;
};

FollowedCondition<PowerState> followPowerState(std::shared_ptr<Queue> queue, std::function<void()> handler);

} // namespace platform
