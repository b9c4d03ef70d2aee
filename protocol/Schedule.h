#pragma once

#include "protocol/ScheduleSettings.h"

#include <cstdint>
#include <optional>
#include <vector>

// Units of the Interval sub-record, by their place in the units pop-up.
enum IntervalUnit : int {
    IntervalUnitMinutes = 0,
    IntervalUnitHours = 1,
    IntervalUnitDays = 2,
    IntervalUnitWeeks = 3,
};

// The Interval sub-record as it stands: the count may be out of range, and is 0 when there is none.
struct IntervalSchedule {
    IntervalUnit unit = IntervalUnitMinutes;
    std::int64_t count = 0;

    // The first of weeks, days, hours and minutes that is there.
    static IntervalSchedule fromRecord(const platform::Dictionary& record);

    bool operator==(const IntervalSchedule&) const = default;
};

// An entry of Intervals as it stands: a value may be out of range, a real is cut towards zero.
struct CalendarEntry {
    // Each nullopt when it is absent or no number.
    std::optional<std::int64_t> weekday = std::nullopt;
    std::optional<std::int64_t> day = std::nullopt;
    std::optional<std::int64_t> hour = std::nullopt;
    std::optional<std::int64_t> minute = std::nullopt;
    bool wellTyped = true; // each of the four that is there is a boolean or an integer

    static CalendarEntry fromRecord(const platform::Dictionary& record);

    bool operator==(const CalendarEntry&) const = default;
};

// The daily suspension as it stands: values may be out of range, missing ones are 0.
struct SuspensionTimes {
    std::int64_t startHour = 0, startMinute = 0, endHour = 0, endMinute = 0;

    static SuspensionTimes fromRecord(const platform::Dictionary& record);

    bool operator==(const SuspensionTimes&) const = default;
};

// A schedule settings record, read once: a missing key or a value of another type is absent, false or 0, numbers count
// by value (true is 1), an unknown mode is when inactive.
struct Schedule {
    bool disabled = false;
    bool backups = false;
    OperationMode mode = OperationModeWhenInactive;
    IntervalSchedule interval;
    std::vector<CalendarEntry> entries; // of CalendarIntervals; what is no dictionary there is left out
    bool asap = false;
    bool suspend = false;
    std::optional<SuspensionTimes> suspension;
    bool dontRunWhenPassive = false;
    bool dontRunWithSleepPreventers = false;
    bool dontRunWhenNotNetworkWired = false;
    bool allowBattery = false;
    bool snapshots = false;

    static Schedule fromRecord(const ScheduleSettings& record);

    // Whether anything is scheduled: a record that holds Disabled schedules neither.
    bool schedulesBackups() const { return !disabled && backups; }
    bool schedulesSnapshots() const { return !disabled && snapshots; }

    bool operator==(const Schedule&) const = default;
};
