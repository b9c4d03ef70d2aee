#include "protocol/ScheduleSettings.h"

bool isBackupsMode(std::string_view text)
{
    return text == BackupsModeWhenInactive || text == BackupsModeInterval || text == BackupsModeCalendarIntervals;
}

const char* backupsModeForIndex(int index)
{
    switch (index) {
    case OperationModeWhenInactive:
        return BackupsModeWhenInactive;
    case OperationModeInterval:
        return BackupsModeInterval;
    default:
        return BackupsModeCalendarIntervals;
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
