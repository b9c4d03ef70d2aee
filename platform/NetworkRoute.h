#pragma once

#include "platform/Condition.h"

#include <string>

namespace platform {

// The way out of this machine: the interface of the default route. A tunnel is not looked at, but what it goes through.
struct NetworkRoute {
    bool isKnown = false;  // otherwise the system tells nothing, and no way out is assumed
    bool isWired = false;  // Ethernet with a carrier, and neither wireless nor a modem
    std::string interface; // empty: no way out

    bool operator==(const NetworkRoute&) const = default;
};

FollowedCondition<NetworkRoute> followNetworkRoute(std::shared_ptr<Queue> queue, std::function<void()> handler);

} // namespace platform
