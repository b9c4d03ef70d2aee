#pragma once

#include "platform/PropertyList.h"

#include <string_view>

// The record that describes when backups run: fetched from the scheduler helper, rebuilt from the controls and sent
// back whole. A missing key, or a value of another type, reads as absent, false or 0. Two records are the same when
// their dictionaries are equal, so a fetched record that holds Disabled never equals one that the application built.
using ScheduleSettings = platform::Dictionary;

namespace ScheduleKey {

// Booleans, except where noted.
inline constexpr const char* Disabled = "Disabled"; // set by the scheduler helper alone; never sent
inline constexpr const char* Backups = "Backups";
inline constexpr const char* BackupsMode =
    "BackupsMode"; // string; each mode's sub-record has the mode's value as its key
inline constexpr const char* Suspend = "Suspend";
inline constexpr const char* SuspendSettings = "SuspendSettings"; // dictionary of the four integers below
inline constexpr const char* DontRunWhenPassive = "DontRunWhenPassive";
inline constexpr const char* DontRunWithSleepPreventers = "DontRunWithSleepPreventers";
inline constexpr const char* DontRunWhenNotNetworkWired = "DontRunWhenNotNetworkWired";
inline constexpr const char* AllowBattery = "AllowBattery";
inline constexpr const char* Snapshots = "Snapshots";

// Of SuspendSettings. The end may lie before the start: the suspension then crosses midnight.
inline constexpr const char* StartHour = "StartHour";     // 0 to 23
inline constexpr const char* StartMinute = "StartMinute"; // 0 to 59
inline constexpr const char* EndHour = "EndHour";
inline constexpr const char* EndMinute = "EndMinute";

// Of the Interval sub-record, which holds one of them: a count from 1 to 999.
inline constexpr const char* Minutes = "Minutes";
inline constexpr const char* Hours = "Hours";
inline constexpr const char* Days = "Days";
inline constexpr const char* Weeks = "Weeks";

// Of the CalendarIntervals sub-record. Intervals is an array of dictionaries that hold the others but ASAP.
inline constexpr const char* Intervals = "Intervals";
inline constexpr const char* ASAP = "ASAP";
inline constexpr const char* Weekday = "Weekday"; // 1 Monday to 7 Sunday, read also 0 Sunday; absent: every day
inline constexpr const char* Hour = "Hour";       // 0 to 23
inline constexpr const char* Minute = "Minute";   // 0 to 59
inline constexpr const char* Day = "Day";         // of the month; never written

} // namespace ScheduleKey

// The modes by their position in the mode pop-up.
enum OperationMode : int {
    OperationModeWhenInactive = 0,
    OperationModeInterval = 1,
    OperationModeCalendarIntervals = 2,
};
inline constexpr int OperationModeCount = 3;

// The values of BackupsMode, which are the keys of the sub-records too.
inline constexpr const char* BackupsModeWhenInactive = "WhenInactive";
inline constexpr const char* BackupsModeInterval = "Interval";
inline constexpr const char* BackupsModeCalendarIntervals = "CalendarIntervals";
bool isBackupsMode(std::string_view text);

// The value of BackupsMode for a pop-up index; any other index, none included, counts as calendar intervals.
const char* backupsModeForIndex(int index);

// The mode that a record names; an unknown one, or none, counts as when inactive.
OperationMode operationModeOfSettings(const ScheduleSettings& settings);
