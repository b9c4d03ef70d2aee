#pragma once

#include "platform/TimeZone.h"
#include "protocol/ScheduleSettings.h"
#include "scheduling/Instant.h"

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace helper {

// What a simulation is told about the computer: what is named changes, the rest stays.
struct ConditionChanges {
    std::optional<bool> battery, passive, sleepPreventers, wired, inUse, hasBattery;
};

// Something that happens to the simulated computer.
struct SimulationEvent {
    struct Sleep {
        bool asleep;
    };
    struct ClockStep {
        std::int64_t seconds;
    };

    std::int64_t at = 0; // seconds of true time since the beginning
    std::variant<ConditionChanges, platform::TimeZone, Sleep, ClockStep, ScheduleSettings> what;
};

// What is simulated, as a property list describes it. docs/enforcement.md lists the keys.
struct SimulationScript {
    ScheduleSettings record;
    platform::TimeZone zone;
    scheduling::Instant from = 0;
    std::int64_t length = 0; // seconds of true time, 0 or more
    std::optional<scheduling::Instant> lastStart{};
    ConditionChanges conditions{};
    std::int64_t duration = 0; // of a backup, seconds
    std::vector<bool> results{};
    std::vector<SimulationEvent> events{}; // by their time

    // Fails with one sentence.
    static std::expected<SimulationScript, std::string> fromPropertyList(const platform::PropertyList& list);
};

} // namespace helper
