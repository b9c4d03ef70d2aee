#pragma once

#include "protocol/Schedule.h"
#include "scheduling/LocalClock.h"

#include <optional>

namespace scheduling {

// The daily suspension: local times of day from a start until before an end, over midnight when the end is earlier.
class Suspension {
public:
    // Equal times and values out of range suspend nothing, a missing value is 0.
    explicit Suspension(const Schedule& schedule);

    bool isInForce() const { return _start != _end; }
    bool holdsAtTimeOfDay(std::int64_t seconds) const;
    bool holdsAt(const LocalClock& clock, Instant instant) const;

    // The next instant at which it may begin or end; nullopt when it is not in force.
    std::optional<Instant> nextBoundary(const LocalClock& clock, Instant after) const;

private:
    std::int64_t _start = 0; // seconds of the day
    std::int64_t _end = 0;
};

} // namespace scheduling
