#pragma once

#include "platform/BackupRunner.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

// Backup programs, which run until a test ends them, also while nobody follows them; and the lock of other backups. Any
// thread; followers are told on their queues.
namespace scripted::backups {

void reset(); // none has run

std::vector<platform::BackupJob> started();
void setStartFailure(std::optional<platform::Error> error); // of every start from now on
// Sees each start before the program runs.
void setStartObserver(std::function<void(const platform::BackupJob&)> observer);

void end(std::optional<int> status, const std::string& reason = {}); // the one that runs
void vanish();        // the same, without a trace for those who come later
void becomeOverdue(); // the one that runs

void setLockHeld(bool isHeld); // by another program

} // namespace scripted::backups
