#include "schedule/model/CalendarRow.h"

namespace {

constexpr int sundayIndex = static_cast<int>(CalendarRow::weekdayTitles.size()) - 1;
constexpr int weekdayOffset = 1; // Monday, weekday 1, is item 2

} // namespace

int CalendarRow::indexForWeekday(std::optional<std::int64_t> weekday)
{
    if (!weekday)
        return everyDayIndex;
    if (*weekday == 0)
        return sundayIndex;
    if (*weekday < everyDayIndex - weekdayOffset || *weekday > sundayIndex - weekdayOffset)
        return noIndex;
    return static_cast<int>(*weekday) + weekdayOffset;
}

std::optional<CalendarRow> CalendarRow::showing(const CalendarEntry& entry, platform::TimeOfDay now)
{
    if (entry.day || (!entry.weekday && !entry.hour))
        return std::nullopt;
    const auto time = platform::timeOfDayFromComponents(entry.hour.value_or(0), entry.minute.value_or(0));
    return CalendarRow{indexForWeekday(entry.weekday), time.value_or(now)};
}

platform::Dictionary CalendarRow::record() const
{
    platform::Dictionary entry;
    if (weekdayIndex != everyDayIndex)
        entry.set(ScheduleKey::Weekday, weekdayIndex - weekdayOffset);
    entry.set(ScheduleKey::Hour, time.hour);
    entry.set(ScheduleKey::Minute, time.minute);
    return entry;
}
