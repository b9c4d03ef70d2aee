#pragma once

#include "helper/simulation/SimulationScript.h"
#include "scheduling/Scheduler.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace helper {

// Plays a script: gives the scheduler its events and the time, as the helper does, and tells what happens in lines of
// JSON.
class Simulation {
public:
    using Print = std::function<void(const std::string& line)>;

    Simulation(SimulationScript script, Print print);

    void run();

private:
    scheduling::Now now() const { return {_script.from + _clockSteps + _elapsed, _elapsed}; }

    void happen(const SimulationEvent& event);
    void setConditions(const ConditionChanges& changes);
    void fallAsleep();
    void wake();
    void setClockBy(std::int64_t seconds);
    void lookUntilNothingChanges();
    bool endBackup();
    void startBackup(scheduling::Instant due);
    std::optional<std::int64_t> nextTime() const;

    void tell(const scheduling::Look& look);
    void tell(const char* event, const std::string& details);

    SimulationScript _script;
    Print _print;
    std::int64_t _elapsed = 0;
    std::int64_t _clockSteps = 0; // sum of what the clock was set by
    scheduling::Conditions _conditions;
    scheduling::Scheduler _scheduler;
    std::size_t _eventsDone = 0;
    std::size_t _backupsDone = 0;
    bool _asleep = false;
    std::optional<std::int64_t> _endsAt;  // true time, of the backup that runs; awake
    std::int64_t _rest = 0;               // of the backup that runs; asleep
    std::optional<std::int64_t> _looksAt; // true time
};

} // namespace helper
