#pragma once

#include "platform/PropertyList.h"

#include <cstddef>
#include <cstdint>

// A closed range of whole numbers.
struct ScheduleRange {
    std::int64_t lowest;
    std::int64_t highest;

    constexpr bool contains(std::int64_t value) const { return value >= lowest && value <= highest; }
    constexpr std::int64_t clamp(std::int64_t value) const
    {
        return value < lowest ? lowest : value > highest ? highest : value;
    }
    bool operator==(const ScheduleRange&) const = default;
};

// What the values of a schedule settings record may be.
namespace ScheduleRanges {

inline constexpr ScheduleRange intervalCount{1, 999};
inline constexpr ScheduleRange hour{0, 23};
inline constexpr ScheduleRange minute{0, 59};
inline constexpr ScheduleRange weekday{0, 7};           // 1 Monday to 7 Sunday; 0 is Sunday too
inline constexpr ScheduleRange day{1, 31};              // of the month
inline constexpr std::size_t maximumIntervals = 10'000; // entries of the CalendarIntervals sub-record

} // namespace ScheduleRanges

// The record that a fresh installation begins with: nothing is scheduled.
platform::Dictionary defaultScheduleSettings();
