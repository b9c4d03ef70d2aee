#include "platform/Calendar.h"

#include <cstdlib>
#include <ctime>
#include <doctest/doctest.h>

namespace {

// The minutes between the current time in the zone and in Greenwich, from 0 to 1439.
int minutesAheadIn(const char* zone)
{
    const auto minutesOfDay = [](const char* name) {
        setenv("TZ", name, 1);
        tzset();
        const auto now = platform::currentTimeOfDay();
        CHECK(now.hour >= 0);
        CHECK(now.hour < 24);
        CHECK(now.minute >= 0);
        CHECK(now.minute < 60);
        return now.hour * 60 + now.minute;
    };
    int ahead = 0;
    std::time_t minute = 0;
    do { // again if the minute ended between the two
        minute = std::time(nullptr) / 60;
        ahead = (minutesOfDay(zone) - minutesOfDay("UTC0") + 1440) % 1440;
    } while (std::time(nullptr) / 60 != minute);
    unsetenv("TZ");
    tzset();
    return ahead;
}

} // namespace

TEST_CASE("the current time of day is that of the user's time zone")
{
    CHECK(minutesAheadIn("UTC0") == 0);
    CHECK(minutesAheadIn("XXX-05:30") == 330);
    CHECK(minutesAheadIn("XXX+09:00") == 900);
}
