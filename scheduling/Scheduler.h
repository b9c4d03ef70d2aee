#pragma once

#include "scheduling/Look.h"
#include "scheduling/Rules.h"

#include <vector>

namespace scheduling {

// Decides when a backup starts. It reads no clock: whoever runs it tells every event with the time at which it happens,
// in their order, and then asks with look(). A value: a copy shows what an event would lead to. One thread at a time.
class Scheduler {
public:
    enum class Start { Scheduled, ByHand };

    // With nothing remembered: the record comes into force now.
    Scheduler(ScheduleSettings record, platform::TimeZone zone, const Conditions& conditions, Now now);
    // The record was in force before. If the memory has a start without an end and that backup does not run any more,
    // the caller tells its end: it failed, now.
    Scheduler(ScheduleSettings record, platform::TimeZone zone, const Conditions& conditions, const Memory& memory,
              Now now);

    const ScheduleSettings& record() const { return _record; }
    const Plan& plan() const { return _plan; }
    const Memory& memory() const { return _memory; }
    const Conditions& conditions() const { return _conditions; }
    // Refers to this scheduler.
    Rules rules() const { return {_plan, _memory, _conditions}; }

    // Events. Each takes effect at once, asleep or not. A look follows, unless the computer sleeps.
    void apply(ScheduleSettings record, Now now);
    void setZone(const platform::TimeZone& zone, Now now);
    void setConditions(const Conditions& conditions, Now now);
    void fellAsleep(Now now);
    void woke(Now now);
    // The clock was set: it would show `before` and shows now.clock.
    void clockWasSet(Instant before, Now now);
    void started(Start how, Now now);
    void ended(bool succeeded, Now now);

    // Settles what is over and says what is to be done. Not while the computer sleeps.
    Look look(Now now);

    Status status(Now now) const;
    // Whether some calendar entry is missed each time, because all its time lies in the daily suspension.
    bool missesEntriesInSuspension() const;

private:
    // What stood in the way when the time of a calendar moment was over.
    struct Observation {
        Instant moment;
        Reasons reasons;
    };

    bool changesSchedule(const Schedule& schedule, const ScheduleSettings& record) const;
    void changePlan(const Plan& plan, bool isAnotherSchedule, Now now);
    void observe(Now now);
    std::vector<Missed> miss(Instant now);
    Reasons reasonsOfMissed(Instant moment) const;
    void keepTimeOfDay(Instant now);
    void settleThrough(Instant now);

    ScheduleSettings _record;
    Plan _plan;
    Memory _memory;
    Conditions _conditions;
    Reasons _told;                          // at the look before, of a backup that was due
    std::vector<Observation> _observations; // oldest first, no more than are told
    Instant _awakeSince = 0;                // the clock ran on from here, and what happened then is not yet observed
    bool _asleep = false;
};

} // namespace scheduling
