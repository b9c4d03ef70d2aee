#include "protocol/Schedule.h"

#include <array>
#include <utility>

using platform::Dictionary;
using platform::PropertyList;

namespace {

const Dictionary& subRecord(const Dictionary& record, const char* key)
{
    static const Dictionary none;
    const Dictionary* found = record.dictionaryForKey(key);
    return found ? *found : none;
}

// Nullopt when the key is absent or no number.
std::optional<std::int64_t> numberForKey(const Dictionary& record, const char* key)
{
    const PropertyList* value = record.find(key);
    return value && value->isNumber() ? std::optional(value->integerValue()) : std::nullopt;
}

bool isIntegerIfThere(const Dictionary& record, const char* key)
{
    const PropertyList* value = record.find(key);
    return !value || value->type() == PropertyList::Type::Boolean || value->type() == PropertyList::Type::Integer;
}

} // namespace

IntervalSchedule IntervalSchedule::fromRecord(const Dictionary& record)
{
    constexpr std::array units{
        std::pair{IntervalUnitWeeks, ScheduleKey::Weeks},
        std::pair{IntervalUnitDays, ScheduleKey::Days},
        std::pair{IntervalUnitHours, ScheduleKey::Hours},
        std::pair{IntervalUnitMinutes, ScheduleKey::Minutes},
    };
    for (const auto& [unit, key] : units) {
        if (const auto count = numberForKey(record, key))
            return {unit, *count};
    }
    return {};
}

CalendarEntry CalendarEntry::fromRecord(const Dictionary& record)
{
    CalendarEntry entry{
        .weekday = numberForKey(record, ScheduleKey::Weekday),
        .day = numberForKey(record, ScheduleKey::Day),
        .hour = numberForKey(record, ScheduleKey::Hour),
        .minute = numberForKey(record, ScheduleKey::Minute),
    };
    for (const char* key : {ScheduleKey::Weekday, ScheduleKey::Day, ScheduleKey::Hour, ScheduleKey::Minute})
        entry.wellTyped = entry.wellTyped && isIntegerIfThere(record, key);
    return entry;
}

SuspensionTimes SuspensionTimes::fromRecord(const Dictionary& record)
{
    return {
        .startHour = record.integerForKey(ScheduleKey::StartHour),
        .startMinute = record.integerForKey(ScheduleKey::StartMinute),
        .endHour = record.integerForKey(ScheduleKey::EndHour),
        .endMinute = record.integerForKey(ScheduleKey::EndMinute),
    };
}

Schedule Schedule::fromRecord(const ScheduleSettings& record)
{
    Schedule schedule;
    schedule.disabled = record.boolForKey(ScheduleKey::Disabled);
    schedule.backups = record.boolForKey(ScheduleKey::Backups);
    schedule.mode = operationModeOfSettings(record);
    schedule.interval = IntervalSchedule::fromRecord(subRecord(record, BackupsModeInterval));
    schedule.suspend = record.boolForKey(ScheduleKey::Suspend);
    schedule.dontRunWhenPassive = record.boolForKey(ScheduleKey::DontRunWhenPassive);
    schedule.dontRunWithSleepPreventers = record.boolForKey(ScheduleKey::DontRunWithSleepPreventers);
    schedule.dontRunWhenNotNetworkWired = record.boolForKey(ScheduleKey::DontRunWhenNotNetworkWired);
    schedule.allowBattery = record.boolForKey(ScheduleKey::AllowBattery);
    schedule.snapshots = record.boolForKey(ScheduleKey::Snapshots);
    const Dictionary& calendar = subRecord(record, BackupsModeCalendarIntervals);
    schedule.asap = calendar.boolForKey(ScheduleKey::ASAP);
    if (const auto* entries = calendar.arrayForKey(ScheduleKey::Intervals)) {
        schedule.entries.reserve(entries->size());
        for (const PropertyList& entry : *entries) {
            if (entry.dictionary())
                schedule.entries.push_back(CalendarEntry::fromRecord(*entry.dictionary()));
        }
    }
    if (const Dictionary* suspension = record.dictionaryForKey(ScheduleKey::SuspendSettings))
        schedule.suspension = SuspensionTimes::fromRecord(*suspension);
    return schedule;
}
