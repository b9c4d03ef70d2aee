#pragma once

#include "platform/Condition.h"

#include <memory>

namespace platform {

struct BackupLockState {
    bool isHeld = false; // by whichever process: a backup is running

    bool operator==(const BackupLockState&) const = default;
};

// Follows the lock on "/var/run/backupd.lock". One that is held for less than a moment may go unseen.
FollowedCondition<BackupLockState> followBackupLock(std::shared_ptr<Queue> queue, std::function<void()> handler);

} // namespace platform
