#include "protocol/ScheduleRanges.h"

#include "protocol/ScheduleSettings.h"

using platform::Dictionary;

Dictionary defaultScheduleSettings()
{
    return {
        {ScheduleKey::Backups, false},
        {ScheduleKey::BackupsMode, BackupsModeWhenInactive},
        {BackupsModeWhenInactive, Dictionary()},
        {BackupsModeInterval, Dictionary{{ScheduleKey::Hours, 1}}},
        {ScheduleKey::Suspend, false},
        {ScheduleKey::SuspendSettings,
         Dictionary{{ScheduleKey::StartHour, 22},
                    {ScheduleKey::StartMinute, 0},
                    {ScheduleKey::EndHour, 6},
                    {ScheduleKey::EndMinute, 0}}},
        {ScheduleKey::DontRunWhenPassive, false},
        {ScheduleKey::DontRunWithSleepPreventers, false},
        {ScheduleKey::DontRunWhenNotNetworkWired, false},
        {ScheduleKey::AllowBattery, false},
        {ScheduleKey::Snapshots, false},
    };
}
