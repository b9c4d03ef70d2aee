#include "protocol/ScheduleSettings.h"

#include <doctest/doctest.h>
#include <string>

using platform::Array;
using platform::Dictionary;

TEST_CASE("each mode's value is the one at its place in the mode pop-up")
{
    CHECK(std::string(backupsModeForIndex(0)) == "WhenInactive");
    CHECK(std::string(backupsModeForIndex(1)) == "Interval");
    CHECK(std::string(backupsModeForIndex(2)) == "CalendarIntervals");
}

TEST_CASE("a pop-up index without a mode is written as calendar intervals")
{
    for (const int index : {-1, 3, 99})
        CHECK(std::string(backupsModeForIndex(index)) == "CalendarIntervals");
}

TEST_CASE("a record names its mode by value, and anything else reads as when inactive")
{
    CHECK(operationModeOfSettings({{"BackupsMode", "WhenInactive"}}) == OperationModeWhenInactive);
    CHECK(operationModeOfSettings({{"BackupsMode", "Interval"}}) == OperationModeInterval);
    CHECK(operationModeOfSettings({{"BackupsMode", "CalendarIntervals"}}) == OperationModeCalendarIntervals);
    CHECK(operationModeOfSettings({}) == OperationModeWhenInactive);
    CHECK(operationModeOfSettings({{"BackupsMode", "interval"}}) == OperationModeWhenInactive);
    CHECK(operationModeOfSettings({{"BackupsMode", ""}}) == OperationModeWhenInactive);
    CHECK(operationModeOfSettings({{"BackupsMode", 1}}) == OperationModeWhenInactive);
    CHECK(operationModeOfSettings({{"BackupsMode", Dictionary{{"Interval", true}}}}) == OperationModeWhenInactive);
}

TEST_CASE("records are the same whatever the order of their keys and the kinds of their numbers")
{
    const ScheduleSettings record{
        {"Backups", true}, {"BackupsMode", "Interval"}, {"Interval", Dictionary{{"Minutes", 90}}}, {"Suspend", false}};
    const ScheduleSettings reordered{
        {"Suspend", 0}, {"Interval", Dictionary{{"Minutes", 90.0}}}, {"BackupsMode", "Interval"}, {"Backups", 1}};
    CHECK(record == reordered);
}

TEST_CASE("records differ by a key more, by a value deep inside and by the order of calendar entries")
{
    const Dictionary nine{{"Hour", 9}, {"Minute", 0}};
    const Dictionary noon{{"Hour", 12}, {"Minute", 0}};
    const auto record = [](const Array& entries) {
        return ScheduleSettings{{"Backups", true}, {"CalendarIntervals", Dictionary{{"Intervals", entries}}}};
    };
    CHECK(record({nine, noon}) == record({nine, noon}));
    CHECK_FALSE(record({nine, noon}) == record({noon, nine}));
    CHECK_FALSE(record({nine}) == record({Dictionary{{"Hour", 9}, {"Minute", 1}}}));
    CHECK_FALSE(record({nine}) == record({nine, nine}));

    ScheduleSettings disabled = record({nine});
    disabled.set(ScheduleKey::Disabled, false);
    CHECK_FALSE(disabled == record({nine}));
}
