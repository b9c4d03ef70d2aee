#pragma once

#include "schedule/model/CalendarRow.h"

#include <cstddef>
#include <vector>

// What the calendar editor's controls say.
struct CalendarState {
    std::vector<CalendarRow> rows;
    bool asap = false;
    bool hasMore = false; // more times than a schedule can hold; a note says that the last ones are left out

    // The entries of a sub-record (null: absent) that are shown, in their order, as many as a schedule can hold; one
    // row for every day at the time `now` when there is none.
    static CalendarState showing(const platform::Dictionary* record, platform::TimeOfDay now);
    // Whether so many rows are more than a schedule can hold.
    static bool isTooMany(std::size_t rows);

    // The sub-record, without the rows that a schedule cannot hold.
    platform::Dictionary record() const;

    bool operator==(const CalendarState&) const = default;
};
