#pragma once

#include "platform/Calendar.h"
#include "protocol/Schedule.h"

#include <array>
#include <cstdint>
#include <optional>

// A row of the calendar editor: the item of its weekday pop-up and its time.
struct CalendarRow {
    static constexpr int noIndex = -1;
    static constexpr int everyDayIndex = 0;

    int weekdayIndex = everyDayIndex; // of the pop-up; noIndex when nothing is selected
    platform::TimeOfDay time;

    // The pop-up's items: keys of the string table, and "" for the separator.
    static constexpr std::array<const char*, 9> weekdayTitles{"Every Day", "",       "Monday",   "Tuesday", "Wednesday",
                                                              "Thursday",  "Friday", "Saturday", "Sunday"};

    // Every day for no weekday, Sunday for 0 and 7; noIndex for a weekday that has no item.
    static int indexForWeekday(std::optional<std::int64_t> weekday);

    // Nullopt for an entry that is not shown: one with a day of the month, or with neither weekday nor hour. `now`
    // stands for a time that cannot be counted.
    static std::optional<CalendarRow> showing(const CalendarEntry& entry, platform::TimeOfDay now);

    // The entry that is written. Sunday is 7. Without a selected item the weekday is one that the scheduler helper
    // refuses, since none would stand for another day.
    platform::Dictionary record() const;

    bool operator==(const CalendarRow&) const = default;
};
