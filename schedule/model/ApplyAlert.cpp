#include "schedule/model/ApplyAlert.h"

bool isAlreadyApplied(const std::optional<ScheduleSettings>& current, const ScheduleSettings& record)
{
    return current == record;
}

bool leavesBackupsOn(const ScheduleSettings& applied)
{
    return applied.boolForKey(ScheduleKey::Backups) && !applied.boolForKey(ScheduleKey::Disabled);
}

ApplyAlert alertAfterApplying(const ScheduleSettings& applied)
{
    const bool schedules = leavesBackupsOn(applied)
        || (applied.boolForKey(ScheduleKey::Snapshots) && !applied.boolForKey(ScheduleKey::Disabled));
    return schedules ? ApplyAlert::Enforced : ApplyAlert::NothingScheduled;
}

ApplyAlert alertAfterFailingToApply(bool userCanceledAuthentication)
{
    return userCanceledAuthentication ? ApplyAlert::None : ApplyAlert::Failed;
}

ApplyAlertTexts textsOf(ApplyAlert alert)
{
    switch (alert) {
    case ApplyAlert::AlreadyApplied:
        return {"Settings already applied.",
                "The settings you are attempting to apply are already the ones installed in your system."};
    case ApplyAlert::Enforced:
        return {"Settings applied successfully.", "Brevane will now enforce the new scheduling."};
    case ApplyAlert::NothingScheduled:
        return {"Settings applied successfully.", "Brevane will not schedule backups anymore."};
    case ApplyAlert::Failed:
        return {"Failed to apply settings.", ""};
    case ApplyAlert::None:
        break;
    }
    return {};
}

bool checksSystemScheduler(ApplyAlert alert)
{
    return alert == ApplyAlert::AlreadyApplied || alert == ApplyAlert::Enforced;
}
