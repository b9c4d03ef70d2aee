#pragma once

#include "protocol/Schedule.h"
#include "scheduling/CalendarMoments.h"
#include "scheduling/Conditions.h"
#include "scheduling/LocalClock.h"
#include "scheduling/Memory.h"
#include "scheduling/Reasons.h"
#include "scheduling/Suspension.h"

#include <optional>

namespace scheduling {

// How long a calendar moment without catching up stays due, its last second included.
inline constexpr std::int64_t momentStaysDue = 600;
// A calendar moment older than this is dealt with untold.
inline constexpr std::int64_t momentCounts = 31 * secondsPerDay;
// A clock put back by more than this moves what lies in the future to now.
inline constexpr std::int64_t smallStepBack = 3'600;

// A schedule as the rules need it, with the zone in force.
struct Plan {
    Plan(const Schedule& read, platform::TimeZone zone)
        : schedule(read),
          local(std::move(zone)),
          calendar(read.entries),
          suspension(read)
    {
    }

    bool isOn() const { return schedule.schedulesBackups(); }
    bool isCalendar() const { return isOn() && schedule.mode == OperationModeCalendarIntervals; }
    bool catchesUp() const { return isCalendar() && schedule.asap; }
    bool expires() const { return isCalendar() && !schedule.asap; }
    bool isWhenInactive() const { return schedule.mode == OperationModeWhenInactive; }
    // An interval that keeps its time of day.
    bool isDaily() const;

    Schedule schedule;
    LocalClock local;
    CalendarMoments calendar;
    Suspension suspension;
};

// The moment of an interval, and the time of day that a moment of days or weeks was made from.
struct IntervalMoment {
    Instant at = 0;
    std::optional<std::int64_t> timeOfDay;
    bool shifted = false; // a gap of the local time moved it
};

// When a backup is due and what stands in its way, by a plan, what is remembered and how the computer stands. Refers to
// all three. A moment is an instant from which a backup is due; nullopt when there is none, or when it is not known.
class Rules {
public:
    Rules(const Plan& plan, const Memory& memory, const Conditions& conditions)
        : _plan(plan),
          _memory(memory),
          _conditions(conditions)
    {
    }

    bool backupRuns() const { return _memory.runs() || _conditions.otherBackup; }

    // The earliest moment of whatever kind, past or to come; and the one that is due now.
    std::optional<Instant> earliestMoment(Now now) const;
    std::optional<Instant> dueMoment(Now now) const;

    // Of the mode of that name, whether it is on or not.
    IntervalMoment intervalMoment() const;
    std::optional<Instant> inactiveMoment(Now now) const;
    std::optional<Instant> retryMoment(Now now) const;
    std::optional<CalendarMoments::Moment> nextCalendarMoment(Instant after) const;
    // The last moment after Settled and before an instant.
    std::optional<Instant> lastUnsettledBefore(Instant instant) const;
    // What Settled becomes when the moments too old to count are dealt with.
    Instant settledByAge(Instant now) const;
    // What would be owed if the schedule or the zone changed now.
    std::optional<Instant> owed(Now now) const;

    Reasons reasonsAt(Instant instant) const;
    // The next instant at which another answer is possible without an event.
    std::optional<Instant> nextLook(Now now) const;

private:
    std::optional<Instant> unusedMoment(Now now) const;
    std::optional<Instant> calendarMoment(Instant now) const;
    std::optional<Instant> scheduledMoment(Now now) const;

    const Plan& _plan;
    const Memory& _memory;
    const Conditions& _conditions;
};

} // namespace scheduling
