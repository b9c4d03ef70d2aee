#include "scheduling/Scheduler.h"

#include <algorithm>

namespace scheduling {

namespace {

constexpr std::size_t mostToldAlone = 5;

// A sub-record that is absent, or no dictionary, is empty.
const platform::Dictionary& subRecordOf(const ScheduleSettings& record, OperationMode mode)
{
    static const platform::Dictionary empty;
    const platform::Dictionary* found = record.dictionaryForKey(backupsModeForIndex(mode));
    return found ? *found : empty;
}

} // namespace

const char* stateName(State state)
{
    switch (state) {
    case State::Off:
        return "off";
    case State::Waiting:
        return "waiting";
    case State::Blocked:
        return "blocked";
    default:
        return "running";
    }
}

std::optional<State> stateNamed(std::string_view name)
{
    for (const State state : {State::Off, State::Waiting, State::Blocked, State::Running}) {
        if (name == stateName(state))
            return state;
    }
    return std::nullopt;
}

Scheduler::Scheduler(ScheduleSettings record, platform::TimeZone zone, const Conditions& conditions, Now now)
    : Scheduler(std::move(record), std::move(zone), conditions, Memory::beginningAt(now.clock), now)
{
}

Scheduler::Scheduler(ScheduleSettings record, platform::TimeZone zone, const Conditions& conditions,
                     const Memory& memory, Now now)
    : _record(std::move(record)),
      _plan(Schedule::fromRecord(_record), std::move(zone)),
      _memory(memory),
      _conditions(conditions),
      _awakeSince(now.clock)
{
}

bool Scheduler::changesSchedule(const Schedule& schedule, const ScheduleSettings& record) const
{
    const Schedule& present = _plan.schedule;
    return schedule.disabled != present.disabled || schedule.backups != present.backups || schedule.mode != present.mode
        || subRecordOf(record, schedule.mode) != subRecordOf(_record, present.mode);
}

void Scheduler::changePlan(const Plan& plan, bool isAnotherSchedule, Now now)
{
    const auto owed = rules().owed(now);
    _plan = plan;
    _observations.clear();
    if (isAnotherSchedule) {
        _memory.since = now.clock;
        _memory.settled = now.clock;
        _memory.timeOfDay.reset();
        _memory.failures = 0;
    }
    if (!_plan.catchesUp())
        _memory.owed.reset();
    else if (owed)
        _memory.owed = owed;
}

void Scheduler::apply(ScheduleSettings record, Now now)
{
    observe(now);
    const Schedule schedule = Schedule::fromRecord(record);
    if (changesSchedule(schedule, record))
        changePlan(Plan(schedule, _plan.local.zone()), true, now);
    else
        _plan = Plan(schedule, _plan.local.zone());
    _record = std::move(record);
}

void Scheduler::setZone(const platform::TimeZone& zone, Now now)
{
    if (zone.name() == _plan.local.zone().name())
        return;
    observe(now);
    changePlan(Plan(_plan.schedule, zone), false, now);
    if (_plan.expires())
        _memory.settled = rules().lastUnsettledBefore(now.clock - momentStaysDue).value_or(_memory.settled);
}

void Scheduler::setConditions(const Conditions& conditions, Now now)
{
    observe(now);
    _conditions = conditions;
}

void Scheduler::fellAsleep(Now now)
{
    observe(now);
    _asleep = true;
}

void Scheduler::woke(Now now)
{
    _asleep = false;
    _awakeSince = now.clock;
}

void Scheduler::clockWasSet(Instant before, Now now)
{
    observe({before, now.elapsed});
    _awakeSince = now.clock;
    // Those times come again.
    std::erase_if(_observations,
                  [&](const Observation& observation) { return observation.moment + momentStaysDue >= now.clock; });
    if (before - now.clock <= smallStepBack)
        return;
    const auto hold = [&](Instant& instant) { instant = std::min(instant, now.clock); };
    hold(_memory.since);
    hold(_memory.settled);
    for (auto* instant : {&_memory.lastStart, &_memory.lastEnd, &_memory.lastSucceeded, &_memory.owed}) {
        if (*instant)
            hold(**instant);
    }
}

void Scheduler::started(Start how, Now now)
{
    observe(now);
    if (how == Start::Scheduled)
        keepTimeOfDay(now.clock);
    _memory.lastStart = now.clock;
    _memory.lastEnd.reset();
    settleThrough(now.clock);
    _told = {};
}

void Scheduler::keepTimeOfDay(Instant now)
{
    if (!_plan.isDaily())
        return;
    const LocalClock& local = _plan.local;
    const IntervalMoment moment = rules().intervalMoment();
    if (moment.at <= now)
        _memory.timeOfDay = local.dayAt(moment.at) == local.dayAt(now) ? moment.timeOfDay : local.timeOfDayAt(now);
    else if (_memory.lastStart && local.dayAt(*_memory.lastStart) != local.dayAt(now))
        _memory.timeOfDay = local.timeOfDayAt(now); // a retry that carried over into another day
}

void Scheduler::ended(bool succeeded, Now now)
{
    observe(now);
    _memory.lastEnd = now.clock;
    if (!succeeded) {
        ++_memory.failures;
        return;
    }
    _memory.lastSucceeded = now.clock;
    _memory.failures = 0;
    settleThrough(now.clock);
}

void Scheduler::settleThrough(Instant now)
{
    _memory.settled = std::max(_memory.settled, now);
    _memory.owed.reset();
    _observations.clear();
}

// What happened since the last event happened under the present conditions.
void Scheduler::observe(Now now)
{
    if (!_asleep && _plan.expires()) {
        Instant after = _awakeSince - momentStaysDue - 1;
        for (auto moment = rules().nextCalendarMoment(after); moment && moment->at + momentStaysDue < now.clock;
             moment = rules().nextCalendarMoment(moment->at)) {
            _observations.push_back({moment->at, rules().reasonsAt(moment->at + momentStaysDue)});
        }
        if (_observations.size() > mostToldAlone)
            _observations.erase(_observations.begin(), _observations.end() - mostToldAlone);
    }
    _awakeSince = now.clock;
}

Reasons Scheduler::reasonsOfMissed(Instant moment) const
{
    for (const Observation& observation : _observations) {
        if (observation.moment == moment)
            return observation.reasons;
    }
    return {Reason::Asleep};
}

std::vector<Missed> Scheduler::miss(Instant now)
{
    std::vector<Missed> missed;
    if (!_plan.expires() || rules().backupRuns())
        return missed;
    std::vector<Instant> moments;
    for (auto moment = rules().nextCalendarMoment(_memory.settled); moment && moment->at + momentStaysDue < now;
         moment = rules().nextCalendarMoment(moment->at))
        moments.push_back(moment->at);
    if (moments.empty())
        return missed;
    _memory.settled = moments.back();
    const auto count = static_cast<std::int64_t>(moments.size());
    if (moments.size() > mostToldAlone)
        return {{moments.back(), count, reasonsOfMissed(moments.back())}};
    for (const Instant moment : moments)
        missed.push_back({moment, 1, reasonsOfMissed(moment)});
    return missed;
}

Look Scheduler::look(Now now)
{
    observe(now);
    if (_plan.isCalendar())
        _memory.settled = rules().settledByAge(now.clock);
    Look look;
    look.missed = miss(now.clock);
    look.due = rules().dueMoment(now);
    if (look.due)
        look.reasons = rules().reasonsAt(now.clock);
    look.blockedAnew = !look.reasons.empty() && look.reasons != _told;
    _told = look.reasons;
    look.next = rules().nextLook(now);
    return look;
}

Status Scheduler::status(Now now) const
{
    Status status;
    status.due = rules().earliestMoment(now);
    const bool isDue = status.due && *status.due <= now.clock;
    if (isDue)
        status.reasons = rules().reasonsAt(now.clock);
    if (rules().backupRuns())
        status.state = State::Running;
    else if (_plan.isOn())
        status.state = status.reasons.empty() ? State::Waiting : State::Blocked;
    return status;
}

bool Scheduler::missesEntriesInSuspension() const
{
    if (!_plan.expires() || !_plan.suspension.isInForce())
        return false;
    const auto isMissed = [&](int minute) {
        for (std::int64_t second = 0; second <= momentStaysDue; second += secondsPerMinute) {
            if (!_plan.suspension.holdsAtTimeOfDay((minute * secondsPerMinute + second) % secondsPerDay))
                return false;
        }
        return true;
    };
    const auto minutes = _plan.calendar.minutesOfDay();
    return std::any_of(minutes.begin(), minutes.end(), isMissed);
}

} // namespace scheduling
