#pragma once

#include "protocol/ScheduleSettings.h"

// Whether nothing was ever set up on this machine.

// Whether a fetched record is the one that a fresh installation begins with, so that the scheduler helper is worth
// asking.
bool mayBeFirstStart(const ScheduleSettings& fetched);
// Whether it says, in its reply to BRVMessageGetBackupProgram, that no schedule was ever applied and no program is
// chosen. A helper of another version does not say so.
bool isFirstStart(const platform::Dictionary& reply);
