#pragma once

#include "platform/Condition.h"

#include <memory>

namespace platform {

struct RunningBackup {
    bool isRunning = false; // whoever has started it

    bool operator==(const RunningBackup&) const = default;
};

// Whether a backup runs at this moment. May ask another program, and wait for it. What is followed knows of the end a
// little later.
bool isBackupRunning();

// Follows that. A backup of less than a moment may go unseen.
FollowedCondition<RunningBackup> followRunningBackup(std::shared_ptr<Queue> queue, std::function<void()> handler);

} // namespace platform
