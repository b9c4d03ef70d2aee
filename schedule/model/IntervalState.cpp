#include "schedule/model/IntervalState.h"

#include "protocol/ScheduleRanges.h"

namespace {

struct Unit {
    const char* key; // in the sub-record
    const char* label;
    const char* singular;
    const char* plural;
};

// By IntervalUnit.
constexpr std::array<Unit, IntervalState::unitCount> units{{
    {ScheduleKey::Minutes, "Back up every-minutes", "minute", "minutes"},
    {ScheduleKey::Hours, "Back up every-hours", "hour", "hours"},
    {ScheduleKey::Days, "Back up every-days", "day", "days"},
    {ScheduleKey::Weeks, "Back up every-weeks", "week", "weeks"},
}};

} // namespace

IntervalState IntervalState::showing(const IntervalSchedule& interval)
{
    return {interval.unit, clampedCount(interval.count)};
}

IntervalUnit IntervalState::unitForIndex(int index)
{
    return index > 0 && index < unitCount ? static_cast<IntervalUnit>(index) : IntervalUnitMinutes;
}

std::int64_t IntervalState::clampedCount(std::int64_t count)
{
    return ScheduleRanges::intervalCount.clamp(count);
}

const char* IntervalState::label() const
{
    return units[unit].label;
}

std::array<const char*, IntervalState::unitCount> IntervalState::unitTitles() const
{
    std::array<const char*, unitCount> titles{};
    for (std::size_t i = 0; i < units.size(); ++i)
        titles[i] = count < 2 ? units[i].singular : units[i].plural;
    return titles;
}

platform::Dictionary IntervalState::record() const
{
    if (unit == IntervalUnitMinutes && count % 60 == 0)
        return {{ScheduleKey::Hours, count / 60}};
    if (unit == IntervalUnitHours && count % 24 == 0)
        return {{ScheduleKey::Days, count / 24}};
    return {{units[unit].key, count}};
}
