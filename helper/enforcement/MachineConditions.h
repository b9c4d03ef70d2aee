#pragma once

#include "helper/enforcement/Clocks.h"
#include "platform/ComputerUse.h"
#include "platform/NetworkRoute.h"
#include "platform/PowerSources.h"
#include "platform/RunningBackup.h"
#include "platform/SleepPreventers.h"
#include "scheduling/Conditions.h"

#include <functional>
#include <memory>

namespace helper {

// How the machine stands, followed on a serial queue.
class MachineConditions {
public:
    // The handler runs on the queue whenever one of the conditions has changed. May take seconds.
    MachineConditions(const std::shared_ptr<platform::Queue>& queue, const std::function<void()>& changed);

    // What is known of the machine now; the rest stays as it is. A backup of this helper's counts as another one.
    void read(scheduling::Conditions& conditions, const Clocks& clocks) const;

private:
    platform::FollowedCondition<platform::PowerState> _power;
    platform::FollowedCondition<platform::ComputerUse> _use;
    platform::FollowedCondition<platform::SleepPreventers> _sleepPreventers;
    platform::FollowedCondition<platform::NetworkRoute> _route;
    platform::FollowedCondition<platform::RunningBackup> _backup;
};

} // namespace helper
