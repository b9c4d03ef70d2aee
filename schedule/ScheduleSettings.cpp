#include "schedule/ScheduleSettings.h"

const char* backupsModeForIndex(int index)
{
    switch (index) {
    case OperationModeWhenInactive:
        return "WhenInactive";
    case OperationModeInterval:
        return "Interval";
    default:
        return "CalendarIntervals";
    }
}

OperationMode operationModeOfSettings(const ScheduleSettings& settings)
{
    if (const std::string* mode = settings.stringForKey(ScheduleKey::BackupsMode)) {
        for (const OperationMode candidate : {OperationModeInterval, OperationModeCalendarIntervals}) {
            if (*mode == backupsModeForIndex(candidate))
                return candidate;
        }
    }
    return OperationModeWhenInactive;
}
