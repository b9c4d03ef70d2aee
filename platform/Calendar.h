#pragma once

#include <cstdint>
#include <optional>

namespace platform {

// An hour and minute of the user's calendar.
struct TimeOfDay {
    int hour = 0;   // 0 to 23
    int minute = 0; // 0 to 59
    bool operator==(const TimeOfDay&) const = default;
};

// Now, in the user's time zone.
TimeOfDay currentTimeOfDay();

// The time that an hour and a minute alone make. As in a lenient calendar, values outside their range carry over: 25:00
// is 01:00 and 10:-1 is 09:59. nullopt when they are too large to be counted.
std::optional<TimeOfDay> timeOfDayFromComponents(std::int64_t hour, std::int64_t minute);

} // namespace platform
