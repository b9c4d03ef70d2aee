#include "scheduling/Suspension.h"

#include "protocol/ScheduleRanges.h"

#include <algorithm>

namespace scheduling {

namespace {

// Nullopt when a value is out of range.
std::optional<std::int64_t> secondsOf(std::int64_t hour, std::int64_t minute)
{
    if (!ScheduleRanges::hour.contains(hour) || !ScheduleRanges::minute.contains(minute))
        return std::nullopt;
    return hour * secondsPerHour + minute * secondsPerMinute;
}

} // namespace

Suspension::Suspension(const Schedule& schedule)
{
    if (!schedule.suspend)
        return;
    const SuspensionTimes times = schedule.suspension.value_or(SuspensionTimes());
    const auto start = secondsOf(times.startHour, times.startMinute);
    const auto end = secondsOf(times.endHour, times.endMinute);
    if (start && end) {
        _start = *start;
        _end = *end;
    }
}

bool Suspension::holdsAtTimeOfDay(std::int64_t seconds) const
{
    if (_start <= _end)
        return seconds >= _start && seconds < _end;
    return seconds >= _start || seconds < _end;
}

bool Suspension::holdsAt(const LocalClock& clock, Instant instant) const
{
    return isInForce() && holdsAtTimeOfDay(clock.timeOfDayAt(instant));
}

std::optional<Instant> Suspension::nextBoundary(const LocalClock& clock, Instant after) const
{
    if (!isInForce())
        return std::nullopt;
    const std::int64_t now = clock.timeOfDayAt(after);
    const auto until = [&](std::int64_t boundary) {
        return boundary > now ? boundary - now : boundary - now + secondsPerDay;
    };
    const Instant boundary = after + std::min(until(_start), until(_end));
    const auto change = clock.nextChange(after);
    return change ? std::min(boundary, *change) : boundary;
}

} // namespace scheduling
