#pragma once

#include "platform/Condition.h"

#include <memory>

namespace platform {

struct BackupLockState {
    bool isHeld = false; // by whichever process: a backup is running

    bool operator==(const BackupLockState&) const = default;
};

// Whether the lock on "/var/run/backupd.lock" is held, at this moment. What is followed knows of its end a little
// later.
bool isBackupLockHeld();

// Follows that lock. One that is held for less than a moment may go unseen.
FollowedCondition<BackupLockState> followBackupLock(std::shared_ptr<Queue> queue, std::function<void()> handler);

} // namespace platform
