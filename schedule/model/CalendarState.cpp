#include "schedule/model/CalendarState.h"

#include "protocol/ScheduleRanges.h"

#include <algorithm>

CalendarState CalendarState::showing(const platform::Dictionary* record, platform::TimeOfDay now)
{
    CalendarState state;
    state.asap = record && record->boolForKey(ScheduleKey::ASAP);
    static const platform::Array none;
    const platform::Array* const intervals = record ? record->arrayForKey(ScheduleKey::Intervals) : nullptr;
    for (const platform::PropertyList& interval : intervals ? *intervals : none) {
        const platform::Dictionary* const entry = interval.dictionary();
        const auto row = entry ? CalendarRow::showing(CalendarEntry::fromRecord(*entry), now) : std::nullopt;
        if (!row)
            continue;
        state.hasMore = isTooMany(state.rows.size() + 1);
        if (state.hasMore)
            break;
        state.rows.push_back(*row);
    }
    if (state.rows.empty())
        state.rows.push_back({CalendarRow::everyDayIndex, now});
    return state;
}

bool CalendarState::isTooMany(std::size_t rows)
{
    return rows > ScheduleRanges::maximumIntervals;
}

platform::Dictionary CalendarState::record() const
{
    const std::size_t count = std::min(rows.size(), ScheduleRanges::maximumIntervals);
    platform::Array intervals;
    intervals.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        intervals.emplace_back(rows[i].record());
    return {{ScheduleKey::Intervals, std::move(intervals)}, {ScheduleKey::ASAP, asap}};
}
