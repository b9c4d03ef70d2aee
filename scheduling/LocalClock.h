#pragma once

#include "platform/TimeZone.h"
#include "scheduling/Instant.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace scheduling {

// Local times are whole seconds since 1970 as a wall clock of the zone counts them. Days are counted from 1970-01-01.
using LocalTime = std::int64_t;
using LocalDay = std::int64_t;

constexpr LocalDay dayOf(LocalTime local)
{
    return local >= 0 ? local / secondsPerDay : -((secondsPerDay - 1 - local) / secondsPerDay);
}
constexpr std::int64_t timeOfDayOf(LocalTime local)
{
    return local - dayOf(local) * secondsPerDay;
}

// The wall clock of a zone. It remembers the changes of the offset that it came by: one thread at a time.
class LocalClock {
public:
    explicit LocalClock(platform::TimeZone zone) : _zone(std::move(zone)) { }

    const platform::TimeZone& zone() const { return _zone; }

    int offsetAt(Instant instant) const { return stretchAt(instant).offset; }
    LocalTime localAt(Instant instant) const { return instant + offsetAt(instant); }
    LocalDay dayAt(Instant instant) const { return dayOf(localAt(instant)); }
    std::int64_t timeOfDayAt(Instant instant) const { return timeOfDayOf(localAt(instant)); }

    // The first instant at which the clock shows this time, or a later one: a time in a gap is the first instant after
    // the gap, a time that comes twice the first of the two. Never earlier for a later time.
    Instant instantOf(LocalTime local) const;
    // The latest time that the clock has shown up to the instant: in an overlap, and for the rest of its time, it shows
    // earlier ones again. Exactly the later times have an instantOf() after this instant.
    LocalTime latestShown(Instant instant) const;
    // Whether the time that the clock shows at the instant comes twice.
    bool isRepeatedAt(Instant instant) const;

    // The first instant after this one at which the offset is another; nullopt when there is none.
    std::optional<Instant> nextChange(Instant instant) const;

private:
    // From one change of the offset to the next.
    struct Stretch {
        Instant begin;
        Instant end;
        int offset;
    };

    const Stretch& stretchAt(Instant instant) const { return _stretches[indexAt(instant)]; }
    std::size_t indexAt(Instant instant) const;
    Stretch stretchFrom(Instant begin) const;

    platform::TimeZone _zone;
    mutable std::vector<Stretch> _stretches; // without holes between them
    mutable std::size_t _latest = 0;         // the one asked for last
};

} // namespace scheduling
