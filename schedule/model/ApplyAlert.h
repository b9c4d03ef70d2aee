#pragma once

#include "protocol/ScheduleSettings.h"

#include <optional>

// What follows a press of Apply.
enum class ApplyAlert {
    None,             // the user dismissed the authentication
    AlreadyApplied,   // nothing was sent
    Enforced,         // applied, and something is scheduled
    NothingScheduled, // applied, and nothing is scheduled anymore
    Failed,           // the error is described
};

// Whether the record is the current one, which is then not sent.
bool isAlreadyApplied(const std::optional<ScheduleSettings>& current, const ScheduleSettings& record);
// Whether backups are on, so that a backup program is needed.
bool leavesBackupsOn(const ScheduleSettings& applied);
ApplyAlert alertAfterApplying(const ScheduleSettings& applied);
ApplyAlert alertAfterFailingToApply(bool userCanceledAuthentication);

// Its texts, keys of the string table. The message is empty where the error is described, and so is the title of None.
struct ApplyAlertTexts {
    const char* title = "";
    const char* message = "";
};
ApplyAlertTexts textsOf(ApplyAlert alert);

// Whether it also warns when the system's own automatic backups are on.
bool checksSystemScheduler(ApplyAlert alert);
