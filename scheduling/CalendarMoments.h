#pragma once

#include "protocol/Schedule.h"
#include "scheduling/LocalClock.h"

#include <cstdint>
#include <optional>
#include <vector>

namespace scheduling {

// The due moments of calendar entries: minutes of days, by the day's weekday and its number in the month. An entry that
// is out of range, of wrong types, or without weekday, day and hour gives none.
class CalendarMoments {
public:
    struct Moment {
        Instant at = 0;
        LocalTime local = 0; // what the entry says: another time than the clock shows where a gap moved it
    };

    explicit CalendarMoments(const std::vector<CalendarEntry>& entries);

    // The first moment after the instant; nullopt when there is none.
    std::optional<Moment> next(const LocalClock& clock, Instant after) const;
    // The last moment at or before an instant and after another.
    std::optional<Moment> last(const LocalClock& clock, Instant until, Instant after) const;

    // The minutes of the day at which there are moments on some day, each once.
    std::vector<int> minutesOfDay() const;

private:
    std::optional<int> firstMinute(LocalDay day, int from) const;
    std::optional<int> lastMinute(LocalDay day, int until) const;

    // Sorted: which days, and then the minute of the day.
    std::vector<std::uint32_t> _times;
};

} // namespace scheduling
