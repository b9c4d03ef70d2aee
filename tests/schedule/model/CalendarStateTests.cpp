#include "protocol/ScheduleRanges.h"
#include "schedule/model/CalendarState.h"

#include <cstdint>
#include <doctest/doctest.h>
#include <limits>
#include <string>
#include <vector>

using platform::Array;
using platform::Dictionary;
using platform::PropertyList;
using platform::TimeOfDay;

namespace {

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();
constexpr TimeOfDay now{12, 34};
const Dictionary everyDayNow{{"Hour", 12}, {"Minute", 34}};

Dictionary calendar(Array intervals, bool asap = false)
{
    return {{"Intervals", std::move(intervals)}, {"ASAP", asap}};
}

CalendarState shown(const Array& intervals)
{
    const Dictionary record = calendar(intervals);
    return CalendarState::showing(&record, now);
}

// What becomes of a sub-record that is shown and written back.
Dictionary rewritten(const Dictionary& record)
{
    return CalendarState::showing(&record, now).record();
}

Array rewritten(const Array& intervals)
{
    return *rewritten(calendar(intervals)).arrayForKey("Intervals");
}

std::vector<std::string> keys(const Dictionary& dictionary)
{
    std::vector<std::string> result;
    for (const auto& entry : dictionary)
        result.push_back(entry.key);
    return result;
}

} // namespace

TEST_CASE("without entries there is one row, every day at the current time")
{
    CHECK(CalendarState::showing(nullptr, now).rows == std::vector<CalendarRow>{{0, now}});
    CHECK(CalendarState::showing(nullptr, now).record() == calendar({everyDayNow}));
    CHECK(rewritten(Dictionary{}) == calendar({everyDayNow}));
    CHECK(rewritten(Array{}) == Array{everyDayNow});
    CHECK(rewritten(Dictionary{{"Intervals", "daily"}}) == calendar({everyDayNow}));
}

TEST_CASE("a list of rows without any is written as an empty one")
{
    CHECK(CalendarState().record() == calendar({}));
}

TEST_CASE("entries that are in order are written back unchanged, in their order, duplicates too")
{
    const Array entries{
        Dictionary{{"Hour", 18}, {"Minute", 0}},
        Dictionary{{"Hour", 9}, {"Minute", 0}},
        Dictionary{{"Weekday", 3}, {"Hour", 14}, {"Minute", 5}},
        Dictionary{{"Weekday", 3}, {"Hour", 14}, {"Minute", 5}},
        Dictionary{{"Weekday", 7}, {"Hour", 0}, {"Minute", 0}},
        Dictionary{{"Weekday", 1}, {"Hour", 23}, {"Minute", 59}},
    };
    CHECK(rewritten(entries) == entries);
}

TEST_CASE("the pop-up has every day, a separator and Monday to Sunday, and each entry its item")
{
    const std::vector<std::string> titles(CalendarRow::weekdayTitles.begin(), CalendarRow::weekdayTitles.end());
    CHECK(titles
          == std::vector<std::string>{"Every Day", "", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday",
                                      "Saturday", "Sunday"});
    CHECK(CalendarRow::indexForWeekday(std::nullopt) == 0);
    CHECK(CalendarRow::indexForWeekday(0) == 8);
    for (int weekday = 1; weekday <= 7; ++weekday) {
        CHECK(CalendarRow::indexForWeekday(weekday) == weekday + 1);
        CHECK(CalendarRow{weekday + 1, {9, 30}}.record()
              == Dictionary{{"Weekday", weekday}, {"Hour", 9}, {"Minute", 30}});
    }
    CHECK(CalendarRow{0, {9, 30}}.record() == Dictionary{{"Hour", 9}, {"Minute", 30}});
}

TEST_CASE("Sunday is read as 0 or 7 and written as 7")
{
    const Dictionary sunday{{"Weekday", 7}, {"Hour", 9}, {"Minute", 30}};
    CHECK(rewritten(Array{Dictionary{{"Weekday", 0}, {"Hour", 9}, {"Minute", 30}}}) == Array{sunday});
    CHECK(rewritten(Array{sunday}) == Array{sunday});
    CHECK(rewritten(Array{Dictionary{{"Weekday", false}, {"Hour", 9}, {"Minute", 30}}}) == Array{sunday});
}

TEST_CASE("a missing hour or minute counts as 0")
{
    CHECK(rewritten(Array{Dictionary{{"Hour", 6}}}) == Array{Dictionary{{"Hour", 6}, {"Minute", 0}}});
    CHECK(rewritten(Array{Dictionary{{"Weekday", 2}}})
          == Array{Dictionary{{"Weekday", 2}, {"Hour", 0}, {"Minute", 0}}});
    CHECK(rewritten(Array{Dictionary{{"Weekday", 2}, {"Minute", 30}}})
          == Array{Dictionary{{"Weekday", 2}, {"Hour", 0}, {"Minute", 30}}});
}

TEST_CASE("an entry with a day of the month, or with neither weekday nor hour, is not shown and not written")
{
    const Dictionary visible{{"Hour", 8}, {"Minute", 15}};
    for (const Dictionary& hidden :
         {Dictionary{{"Minute", 30}}, Dictionary{}, Dictionary{{"Day", 1}, {"Hour", 9}},
          Dictionary{{"Day", 0}, {"Weekday", 2}, {"Hour", 9}, {"Minute", 1}}, Dictionary{{"Day", true}, {"Hour", 9}}}) {
        CHECK(rewritten(Array{hidden, visible}) == Array{visible});
        CHECK(rewritten(Array{hidden}) == Array{everyDayNow});
    }
}

TEST_CASE("values of other types read as absent")
{
    CHECK(rewritten(Array{Dictionary{{"Day", "first"}, {"Hour", 9}}}) == Array{Dictionary{{"Hour", 9}, {"Minute", 0}}});
    CHECK(rewritten(Array{Dictionary{{"Weekday", "Monday"}, {"Hour", 9}}})
          == Array{Dictionary{{"Hour", 9}, {"Minute", 0}}});
    CHECK(rewritten(Array{Dictionary{{"Weekday", "Monday"}}}) == Array{everyDayNow});
    CHECK(rewritten(Array{Dictionary{{"Hour", 9}, {"Minute", Array{}}}})
          == Array{Dictionary{{"Hour", 9}, {"Minute", 0}}});
    CHECK(rewritten(Array{PropertyList("noon"), PropertyList(12), PropertyList(Array{})}) == Array{everyDayNow});
    CHECK(rewritten(Array{Dictionary{{"Weekday", true}, {"Hour", 9.9}, {"Minute", 2.5}}})
          == Array{Dictionary{{"Weekday", 1}, {"Hour", 9}, {"Minute", 2}}});
}

TEST_CASE("hours and minutes of an entry carry over, as a lenient calendar has it")
{
    struct Case {
        std::int64_t hour, minute;
        TimeOfDay shown;
    };
    for (const Case& each : std::vector<Case>{{99, 0, {3, 0}},
                                              {24, 0, {0, 0}},
                                              {0, 60, {1, 0}},
                                              {-1, 0, {23, 0}},
                                              {10, -1, {9, 59}},
                                              {23, 61, {0, 1}}}) {
        CAPTURE(each.hour);
        const Dictionary entry{{"Hour", each.hour}, {"Minute", each.minute}};
        CHECK(shown({entry}).rows == std::vector<CalendarRow>{{0, each.shown}});
    }
}

TEST_CASE("a time that cannot be counted is shown as the current time")
{
    for (const auto& [hour, minute] :
         {std::pair{largest, std::int64_t{0}}, {smallest, smallest}, {largest / 60, largest}})
        CHECK(shown({Dictionary{{"Hour", hour}, {"Minute", minute}}}).rows == std::vector<CalendarRow>{{0, now}});
}

TEST_CASE("a weekday that there is not selects nothing and is written as none, which the scheduler helper refuses")
{
    for (const std::int64_t weekday : {std::int64_t{8}, std::int64_t{100}, std::int64_t{-2}, largest, smallest}) {
        CAPTURE(weekday);
        CHECK(CalendarRow::indexForWeekday(weekday) == CalendarRow::noIndex);
        CHECK(rewritten(Array{Dictionary{{"Weekday", weekday}, {"Hour", 9}, {"Minute", 0}}})
              == Array{Dictionary{{"Weekday", -2}, {"Hour", 9}, {"Minute", 0}}});
    }
}

TEST_CASE("a weekday stands one place further down the pop-up than its number, so that -1 is every day")
{
    CHECK(CalendarRow::indexForWeekday(-1) == 0);
    CHECK(rewritten(Array{Dictionary{{"Weekday", -1}, {"Hour", 9}, {"Minute", 0}}})
          == Array{Dictionary{{"Hour", 9}, {"Minute", 0}}});
}

TEST_CASE("the sub-record and its entries have their keys in order, with values of their own types")
{
    const Dictionary written = rewritten(calendar(
        {Dictionary{{"Minute", 5}, {"Hour", 4}, {"Weekday", 3}}, Dictionary{{"Minute", 5}, {"Hour", 4}}}, true));
    CHECK(keys(written) == std::vector<std::string>{"Intervals", "ASAP"});
    CHECK(written.find("ASAP")->type() == PropertyList::Type::Boolean);
    const Array& entries = *written.arrayForKey("Intervals");
    CHECK(keys(*entries[0].dictionary()) == std::vector<std::string>{"Weekday", "Hour", "Minute"});
    CHECK(keys(*entries[1].dictionary()) == std::vector<std::string>{"Hour", "Minute"});
    for (const auto& entry : *entries[0].dictionary())
        CHECK(entry.value.type() == PropertyList::Type::Integer);
}

TEST_CASE("the catch-up box is on exactly for a true number")
{
    for (const PropertyList& on : {PropertyList(true), PropertyList(1), PropertyList(0.5), PropertyList(-3)})
        CHECK(rewritten(Dictionary{{"ASAP", on}}).boolForKey("ASAP"));
    for (const PropertyList& off : {PropertyList(false), PropertyList(0), PropertyList("yes"), PropertyList(Array{})})
        CHECK_FALSE(rewritten(Dictionary{{"ASAP", off}}).boolForKey("ASAP"));
    CHECK_FALSE(rewritten(Dictionary{}).boolForKey("ASAP"));
}

TEST_CASE("as many entries are shown as a schedule can hold, and more are noted")
{
    const std::size_t most = ScheduleRanges::maximumIntervals;
    Array entries(most, Dictionary{{"Hour", 9}, {"Minute", 0}});
    CHECK(shown(entries).rows.size() == most);
    CHECK_FALSE(shown(entries).hasMore);

    // One that is not shown does not count.
    entries.insert(entries.begin(), Dictionary{{"Day", 1}, {"Hour", 9}});
    CHECK(shown(entries).rows.size() == most);
    CHECK_FALSE(shown(entries).hasMore);

    entries.emplace_back(Dictionary{{"Hour", 10}, {"Minute", 0}});
    CHECK(shown(entries).rows.size() == most);
    CHECK(shown(entries).hasMore);
    CHECK(rewritten(entries) == Array(most, Dictionary{{"Hour", 9}, {"Minute", 0}}));
    CHECK_FALSE(shown({}).hasMore);
}

TEST_CASE("rows that a schedule cannot hold are not written")
{
    const std::size_t most = ScheduleRanges::maximumIntervals;
    CHECK_FALSE(CalendarState::isTooMany(most));
    CHECK(CalendarState::isTooMany(most + 1));
    CalendarState state{.rows = std::vector<CalendarRow>(most, CalendarRow{0, {9, 0}})};
    state.rows.push_back({2, {10, 0}});
    CHECK(*state.record().arrayForKey("Intervals") == Array(most, Dictionary{{"Hour", 9}, {"Minute", 0}}));
}
