#include "scheduling/Rules.h"

#include "protocol/ScheduleRanges.h"

#include <algorithm>
#include <array>

namespace scheduling {

namespace {

constexpr std::array<std::int64_t, 4> retryDelays{300, 900, 2'700, 21'600};
constexpr std::int64_t pauseWhenInactive = 3'600; // after a backup
constexpr std::int64_t unusedLongEnough = 300;
constexpr std::int64_t pauseOfIntervals = 60; // after a backup
constexpr int daysPerWeek = 7;

std::optional<Instant> earlier(std::optional<Instant> one, std::optional<Instant> other)
{
    return one && other ? std::min(*one, *other) : one ? one : other;
}

} // namespace

bool Plan::isDaily() const
{
    const IntervalUnit unit = schedule.interval.unit;
    return isOn() && schedule.mode == OperationModeInterval && (unit == IntervalUnitDays || unit == IntervalUnitWeeks);
}

IntervalMoment Rules::intervalMoment() const
{
    const IntervalSchedule& interval = _plan.schedule.interval;
    const std::int64_t count = ScheduleRanges::intervalCount.clamp(interval.count);
    const Instant base = _memory.lastStart.value_or(_memory.since);
    IntervalMoment moment;
    if (_plan.isDaily()) {
        const LocalTime localBase = _plan.local.localAt(base);
        const LocalDay day = dayOf(localBase) + count * (interval.unit == IntervalUnitWeeks ? daysPerWeek : 1);
        moment.timeOfDay = _memory.timeOfDay.value_or(timeOfDayOf(localBase));
        const LocalTime wanted = day * secondsPerDay + *moment.timeOfDay;
        moment.at = _plan.local.instantOf(wanted);
        moment.shifted = _plan.local.localAt(moment.at) != wanted;
    } else {
        moment.at = base + count * (interval.unit == IntervalUnitHours ? secondsPerHour : secondsPerMinute);
    }
    if (_memory.lastEnd)
        moment.at = std::max(moment.at, *_memory.lastEnd + pauseOfIntervals);
    return moment;
}

std::optional<Instant> Rules::unusedMoment(Now now) const
{
    if (!_conditions.unusedSince)
        return std::nullopt;
    return now.clock - (now.elapsed - *_conditions.unusedSince - unusedLongEnough);
}

std::optional<Instant> Rules::inactiveMoment(Now now) const
{
    const auto unused = unusedMoment(now);
    if (!unused || _memory.runs())
        return std::nullopt;
    return std::max(*unused, _memory.lastEnd ? *_memory.lastEnd + pauseWhenInactive : _memory.since);
}

std::optional<Instant> Rules::retryMoment(Now now) const
{
    if (!_plan.isOn() || _memory.failures == 0 || !_memory.lastEnd)
        return std::nullopt;
    const auto step = std::min<std::int64_t>(_memory.failures, retryDelays.size()) - 1;
    const Instant at = *_memory.lastEnd + retryDelays[static_cast<std::size_t>(step)];
    if (!_plan.isWhenInactive())
        return at;
    const auto unused = unusedMoment(now);
    return unused ? std::optional(std::max(at, *unused)) : std::nullopt;
}

std::optional<CalendarMoments::Moment> Rules::nextCalendarMoment(Instant after) const
{
    return _plan.calendar.next(_plan.local, std::max(after, _memory.settled));
}

std::optional<Instant> Rules::lastUnsettledBefore(Instant instant) const
{
    const auto last = _plan.calendar.last(_plan.local, instant - 1, _memory.settled);
    return last ? std::optional(last->at) : std::nullopt;
}

Instant Rules::settledByAge(Instant now) const
{
    auto old = lastUnsettledBefore(now - momentCounts);
    if (old && _plan.catchesUp())
        old = lastUnsettledBefore(*old); // the latest one counts
    return old.value_or(_memory.settled);
}

std::optional<Instant> Rules::calendarMoment(Instant now) const
{
    if (_plan.expires()) {
        const auto moment = nextCalendarMoment(now - momentStaysDue - 1);
        return moment ? std::optional(moment->at) : std::nullopt;
    }
    const auto moment = nextCalendarMoment(settledByAge(now));
    return earlier(moment ? std::optional(moment->at) : std::nullopt, _memory.owed);
}

std::optional<Instant> Rules::scheduledMoment(Now now) const
{
    if (!_plan.isOn())
        return std::nullopt;
    switch (_plan.schedule.mode) {
    case OperationModeInterval:
        return intervalMoment().at;
    case OperationModeCalendarIntervals:
        return calendarMoment(now.clock);
    default:
        return inactiveMoment(now);
    }
}

std::optional<Instant> Rules::earliestMoment(Now now) const
{
    return earlier(scheduledMoment(now), retryMoment(now));
}

std::optional<Instant> Rules::dueMoment(Now now) const
{
    const auto earliest = earliestMoment(now);
    return earliest && *earliest <= now.clock ? earliest : std::nullopt;
}

std::optional<Instant> Rules::owed(Now now) const
{
    if (const auto due = dueMoment(now))
        return due;
    const bool waitsForRetry = _plan.isOn() && _memory.failures > 0;
    return waitsForRetry ? _memory.lastEnd : std::nullopt;
}

Reasons Rules::reasonsAt(Instant instant) const
{
    const Schedule& schedule = _plan.schedule;
    const Conditions& now = _conditions;
    Reasons reasons;
    reasons.addIf(_plan.suspension.holdsAt(_plan.local, instant), Reason::Suspended);
    reasons.addIf(now.battery && now.hasBattery && !schedule.allowBattery, Reason::Battery);
    reasons.addIf(now.passive && schedule.dontRunWhenPassive, Reason::Passive);
    reasons.addIf(now.sleepPreventers && schedule.dontRunWithSleepPreventers, Reason::SleepPreventers);
    reasons.addIf(!now.wired && schedule.dontRunWhenNotNetworkWired, Reason::NotWired);
    reasons.addIf(backupRuns(), Reason::Running);
    reasons.addIf(now.maintenance, Reason::Maintenance);
    reasons.addIf(now.noProgram, Reason::NoProgram);
    return reasons;
}

std::optional<Instant> Rules::nextLook(Now now) const
{
    std::optional<Instant> next;
    const auto consider = [&](std::optional<Instant> instant) {
        if (instant && *instant > now.clock)
            next = earlier(next, instant);
    };
    consider(scheduledMoment(now));
    consider(retryMoment(now));
    if (dueMoment(now))
        consider(_plan.suspension.nextBoundary(_plan.local, now.clock));
    if (!_plan.isCalendar())
        return next;

    const auto oldest = nextCalendarMoment(_memory.settled);
    if (const auto coming = nextCalendarMoment(now.clock))
        consider(coming->at);
    if (_plan.expires()) {
        const auto open = nextCalendarMoment(now.clock - momentStaysDue - 1);
        if (open && open->at <= now.clock)
            consider(open->at + momentStaysDue + 1);
        if (oldest)
            consider(oldest->at + momentCounts + 1);
    } else if (oldest) {
        if (const auto second = nextCalendarMoment(oldest->at))
            consider(second->at + momentCounts + 1);
    }
    return next;
}

} // namespace scheduling
