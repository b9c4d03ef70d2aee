#pragma once

#include "scheduling/Instant.h"

#include <chrono>
#include <optional>

namespace helper {

// The machine's clocks as the scheduler wants them: in whole seconds that begin together, and with what happened to
// them since they were read last.
class Clocks {
public:
    struct Reading {
        scheduling::Now now;
        std::optional<scheduling::Instant> before; // the clock was set: what it would show otherwise
        bool slept = false;                        // the computer did
    };

    Clocks();

    Reading read();
    // A time since the machine was started (ClockReading::sinceBoot) as Now::elapsed.
    std::int64_t elapsedAt(std::chrono::nanoseconds sinceBoot) const;

private:
    std::int64_t offsetSeconds() const;

    std::chrono::nanoseconds _offset; // of the real clock from the time since the start
    std::chrono::nanoseconds _asleep; // in all
};

} // namespace helper
