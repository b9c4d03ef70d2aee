#pragma once

#include <cstdint>

namespace scheduling {

// Whole seconds since 1970 in UTC. Between the years 1 and 9999.
using Instant = std::int64_t;

inline constexpr Instant earliestInstant = -62'135'596'800; // 0001-01-01T00:00:00Z
inline constexpr Instant latestInstant = 253'402'300'799;   // 9999-12-31T23:59:59Z

inline constexpr std::int64_t secondsPerMinute = 60;
inline constexpr std::int64_t secondsPerHour = 3'600;
inline constexpr std::int64_t secondsPerDay = 86'400;

// One moment on both clocks.
struct Now {
    Instant clock = 0;        // the wall clock, which may be set
    std::int64_t elapsed = 0; // seconds of true time since any fixed instant, asleep or not; never set
    bool operator==(const Now&) const = default;
};

} // namespace scheduling
