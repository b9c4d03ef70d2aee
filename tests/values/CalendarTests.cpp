#include "platform/Calendar.h"

#include <doctest/doctest.h>
#include <limits>

using platform::TimeOfDay;
using platform::timeOfDayFromComponents;

TEST_CASE("every hour and minute of the day is that time")
{
    for (int hour = 0; hour < 24; ++hour) {
        for (int minute = 0; minute < 60; ++minute)
            CHECK(timeOfDayFromComponents(hour, minute) == TimeOfDay{hour, minute});
    }
}

TEST_CASE("hours and minutes out of range carry over")
{
    CHECK(timeOfDayFromComponents(24, 0) == TimeOfDay{0, 0});
    CHECK(timeOfDayFromComponents(99, 61) == TimeOfDay{4, 1});
    CHECK(timeOfDayFromComponents(-1, 0) == TimeOfDay{23, 0});
    CHECK(timeOfDayFromComponents(0, -1) == TimeOfDay{23, 59});
    CHECK(timeOfDayFromComponents(10, -1441) == TimeOfDay{9, 59});
}

TEST_CASE("hours and minutes that cannot be counted together are no time")
{
    constexpr auto largest = std::numeric_limits<std::int64_t>::max();
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    CHECK_FALSE(timeOfDayFromComponents(largest, 0));
    CHECK_FALSE(timeOfDayFromComponents(smallest, 0));
    CHECK_FALSE(timeOfDayFromComponents(1, largest));
    CHECK_FALSE(timeOfDayFromComponents(-1, smallest));
    CHECK(timeOfDayFromComponents(0, largest));
    CHECK(timeOfDayFromComponents(largest / 60, 7));
}
