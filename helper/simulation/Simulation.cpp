#include "helper/simulation/Simulation.h"

#include "scheduling/InstantText.h"

#include <algorithm>
#include <limits>

namespace helper {

using namespace scheduling;

namespace {

std::string quotedText(std::string_view text)
{
    return '"' + std::string(text) + '"';
}

std::string dueField(Instant due)
{
    return ", \"due\": " + quotedText(textOfInstant(due));
}

std::string reasonsField(const Reasons& reasons)
{
    std::string text;
    for (const std::string_view name : reasons.names())
        text += (text.empty() ? "" : ", ") + quotedText(name);
    return ", \"reasons\": [" + text + "]";
}

Conditions conditionsWith(Conditions conditions, const ConditionChanges& changes, std::int64_t elapsed)
{
    conditions.battery = changes.battery.value_or(conditions.battery);
    conditions.hasBattery = changes.hasBattery.value_or(conditions.hasBattery);
    conditions.passive = changes.passive.value_or(conditions.passive);
    conditions.sleepPreventers = changes.sleepPreventers.value_or(conditions.sleepPreventers);
    conditions.wired = changes.wired.value_or(conditions.wired);
    if (changes.inUse == true)
        conditions.unusedSince.reset();
    else if (changes.inUse == false && !conditions.unusedSince)
        conditions.unusedSince = elapsed;
    return conditions;
}

Conditions conditionsAtBeginning(const ConditionChanges& changes)
{
    Conditions conditions;
    conditions.unusedSince = 0;
    return conditionsWith(conditions, changes, 0);
}

Memory memoryAtBeginning(const SimulationScript& script)
{
    Memory memory = Memory::beginningAt(script.from);
    memory.lastStart = memory.lastEnd = memory.lastSucceeded = script.lastStart;
    return memory;
}

} // namespace

Simulation::Simulation(SimulationScript script, Print print)
    : _script(std::move(script)),
      _print(std::move(print)),
      _conditions(conditionsAtBeginning(_script.conditions)),
      _scheduler(_script.record, _script.zone, _conditions, memoryAtBeginning(_script), {_script.from, 0})
{
}

void Simulation::run()
{
    for (std::optional<std::int64_t> time = 0; time; time = nextTime()) {
        _elapsed = *time;
        while (_eventsDone < _script.events.size() && _script.events[_eventsDone].at == _elapsed)
            happen(_script.events[_eventsDone++]);
        if (!_asleep)
            lookUntilNothingChanges();
    }
}

// The next time at which something happens, the end of the simulation included.
std::optional<std::int64_t> Simulation::nextTime() const
{
    if (_elapsed >= _script.length)
        return std::nullopt;
    std::int64_t next = _script.length;
    if (_eventsDone < _script.events.size())
        next = std::min(next, _script.events[_eventsDone].at);
    if (!_asleep && _endsAt)
        next = std::min(next, *_endsAt);
    if (!_asleep && _looksAt)
        next = std::min(next, *_looksAt);
    return next;
}

void Simulation::happen(const SimulationEvent& event)
{
    if (const auto* changes = std::get_if<ConditionChanges>(&event.what)) {
        setConditions(*changes);
    } else if (const auto* zone = std::get_if<platform::TimeZone>(&event.what)) {
        _scheduler.setZone(*zone, now());
    } else if (const auto* sleep = std::get_if<SimulationEvent::Sleep>(&event.what)) {
        if (sleep->asleep && !_asleep)
            fallAsleep();
        else if (!sleep->asleep && _asleep)
            wake();
    } else if (const auto* step = std::get_if<SimulationEvent::ClockStep>(&event.what)) {
        setClockBy(step->seconds);
    } else {
        _scheduler.apply(std::get<ScheduleSettings>(event.what), now());
    }
}

void Simulation::setConditions(const ConditionChanges& changes)
{
    _conditions = conditionsWith(_conditions, changes, _elapsed);
    _scheduler.setConditions(_conditions, now());
}

void Simulation::fallAsleep()
{
    _asleep = true;
    if (_endsAt)
        _rest = *_endsAt - _elapsed;
    _scheduler.fellAsleep(now());
}

void Simulation::wake()
{
    _asleep = false;
    if (_endsAt)
        _endsAt = _elapsed + _rest;
    _scheduler.woke(now());
}

void Simulation::setClockBy(std::int64_t seconds)
{
    const Instant before = now().clock;
    _clockSteps += seconds;
    _scheduler.clockWasSet(before, now());
}

void Simulation::lookUntilNothingChanges()
{
    for (bool changes = true; changes;) {
        changes = endBackup();
        const Look look = _scheduler.look(now());
        tell(look);
        if (look.shouldStart()) {
            startBackup(*look.due);
            changes = true;
        }
        _looksAt = look.next ? std::optional(_elapsed + (*look.next - now().clock)) : std::nullopt;
    }
}

bool Simulation::endBackup()
{
    if (!_endsAt || *_endsAt > _elapsed)
        return false;
    const bool succeeds = _backupsDone >= _script.results.size() || _script.results[_backupsDone];
    ++_backupsDone;
    _endsAt.reset();
    _scheduler.ended(succeeds, now());
    tell("end", succeeds ? ", \"succeeded\": true" : ", \"succeeded\": false");
    return true;
}

void Simulation::startBackup(Instant due)
{
    tell("start", dueField(due));
    _scheduler.started(Scheduler::Start::Scheduled, now());
    // One that takes longer than the simulation never ends.
    _endsAt = _elapsed + std::min(_script.duration, _script.length + 1);
}

void Simulation::tell(const Look& look)
{
    for (const Missed& missed : look.missed) {
        const std::string count = missed.count > 1 ? ", \"count\": " + std::to_string(missed.count) : "";
        tell("missed", dueField(missed.due) + count + reasonsField(missed.reasons));
    }
    if (look.blockedAnew)
        tell("blocked", dueField(*look.due) + reasonsField(look.reasons));
}

void Simulation::tell(const char* event, const std::string& details)
{
    const Instant clock = now().clock;
    _print("{\"elapsed\": " + std::to_string(_elapsed) + ", \"clock\": " + quotedText(textOfInstant(clock))
           + ", \"local\": " + quotedText(localTextOfInstant(_scheduler.plan().local, clock))
           + ", \"event\": " + quotedText(event) + details + "}");
}

} // namespace helper
