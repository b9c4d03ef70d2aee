#include "firststart/model/FirstStartCondition.h"

#include "backupprogram/model/ProgramOffer.h"
#include "protocol/BackupProgram.h"
#include "protocol/ScheduleRanges.h"

bool mayBeFirstStart(const ScheduleSettings& fetched)
{
    return fetched == defaultScheduleSettings();
}

bool isFirstStart(const platform::Dictionary& reply)
{
    return reply.boolForKey(BackupProgramKey::NeverApplied) && !ProgramOffer::inReply(reply).hasChoice();
}
