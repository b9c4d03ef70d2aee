#include "scheduling/InstantText.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace scheduling {

namespace {

std::string textOfWallClock(LocalTime local)
{
    const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(dayOf(local)))};
    const auto seconds = static_cast<int>(timeOfDayOf(local));
    char text[48];
    const int length = std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()),
                                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                                     seconds / 3'600, seconds / 60 % 60, seconds % 60);
    return {text, static_cast<std::size_t>(length)};
}

} // namespace

std::string textOfInstant(Instant instant)
{
    return textOfWallClock(instant) + "Z";
}

std::string localTextOfInstant(const LocalClock& clock, Instant instant)
{
    const int offset = clock.offsetAt(instant);
    const int size = std::abs(offset);
    char text[24];
    std::snprintf(text, sizeof text, "%c%02d:%02d", offset < 0 ? '-' : '+', size / 3'600, size / 60 % 60);
    std::string whole = textOfWallClock(instant + offset) + text;
    if (size % 60 != 0) {
        std::snprintf(text, sizeof text, ":%02d", size % 60);
        whole += text;
    }
    return whole;
}

} // namespace scheduling
