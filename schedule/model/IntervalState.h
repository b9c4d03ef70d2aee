#pragma once

#include "protocol/Schedule.h"

#include <array>
#include <cstdint>

// What the interval editor's controls say: a count from 1 to 999 of a unit. The texts are keys of the string table.
struct IntervalState {
    static constexpr int unitCount = 4;

    IntervalUnit unit = IntervalUnitMinutes;
    std::int64_t count = 1;

    static IntervalState showing(const IntervalSchedule& interval);
    // The unit of the pop-up's index; minutes when it is no unit's.
    static IntervalUnit unitForIndex(int index);
    // The nearest count that the editor holds.
    static std::int64_t clampedCount(std::int64_t count);

    // Each unit has a label of its own, so that translations can agree with it.
    const char* label() const;
    // By IntervalUnit. They follow the count, not the unit.
    std::array<const char*, unitCount> unitTitles() const;

    // Whole hours of minutes become hours, whole days of hours days; days never become weeks.
    platform::Dictionary record() const;

    bool operator==(const IntervalState&) const = default;
};
