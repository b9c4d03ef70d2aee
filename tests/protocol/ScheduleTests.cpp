#include "protocol/Schedule.h"
#include "protocol/ScheduleRanges.h"

#include <doctest/doctest.h>
#include <limits>

using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::PropertyList;

namespace {

// A value of each type that is no number.
const std::vector<PropertyList> noNumbers{"1", "", Date{1}, Data(), Array{1}, Dictionary{{"Hours", 1}}};

// A boolean of the record, and what it is called there.
struct Flag {
    const char* key;
    bool Schedule::* member;
};
const Flag flags[] = {
    {"Disabled", &Schedule::disabled},
    {"Backups", &Schedule::backups},
    {"Suspend", &Schedule::suspend},
    {"DontRunWhenPassive", &Schedule::dontRunWhenPassive},
    {"DontRunWithSleepPreventers", &Schedule::dontRunWithSleepPreventers},
    {"DontRunWhenNotNetworkWired", &Schedule::dontRunWhenNotNetworkWired},
    {"AllowBattery", &Schedule::allowBattery},
    {"Snapshots", &Schedule::snapshots},
};

Schedule withInterval(const Dictionary& interval)
{
    return Schedule::fromRecord({{"Interval", interval}});
}

Schedule withEntries(const Array& entries)
{
    return Schedule::fromRecord({{"CalendarIntervals", Dictionary{{"Intervals", entries}}}});
}

} // namespace

TEST_CASE("an empty record reads as off, when inactive, with nothing in it")
{
    const Schedule schedule = Schedule::fromRecord({});
    for (const Flag& flag : flags) {
        CAPTURE(flag.key);
        CHECK_FALSE(schedule.*flag.member);
    }
    CHECK(schedule.mode == OperationModeWhenInactive);
    CHECK(schedule.interval.unit == IntervalUnitMinutes);
    CHECK(schedule.interval.count == 0);
    CHECK(schedule.entries.empty());
    CHECK_FALSE(schedule.asap);
    CHECK_FALSE(schedule.suspension);
    CHECK(schedule == Schedule());
}

TEST_CASE("each boolean is read under its own key, and alone")
{
    for (const Flag& flag : flags) {
        CAPTURE(flag.key);
        Schedule expected;
        expected.*flag.member = true;
        CHECK(Schedule::fromRecord({{flag.key, true}}) == expected);
        CHECK(Schedule::fromRecord({{flag.key, false}}) == Schedule());
        CHECK(Schedule::fromRecord({{flag.key, true}}) != Schedule());
    }
}

TEST_CASE("a number stands for a boolean by its value, anything else is false")
{
    for (const Flag& flag : flags) {
        CAPTURE(flag.key);
        for (const PropertyList& yes : {PropertyList(1), PropertyList(-1), PropertyList(0.5), PropertyList(256)})
            CHECK(Schedule::fromRecord({{flag.key, yes}}).*flag.member);
        for (const PropertyList& no : {PropertyList(0), PropertyList(0.0), PropertyList(-0.0)})
            CHECK_FALSE(Schedule::fromRecord({{flag.key, no}}).*flag.member);
        for (const PropertyList& value : noNumbers)
            CHECK_FALSE(Schedule::fromRecord({{flag.key, value}}).*flag.member);
    }
}

TEST_CASE("backups and snapshots are scheduled when their box is on and the record is not disabled")
{
    for (const bool disabled : {false, true}) {
        for (const bool backups : {false, true}) {
            for (const bool snapshots : {false, true}) {
                CAPTURE(disabled);
                CAPTURE(backups);
                CAPTURE(snapshots);
                const Schedule schedule =
                    Schedule::fromRecord({{"Disabled", disabled}, {"Backups", backups}, {"Snapshots", snapshots}});
                CHECK(schedule.schedulesBackups() == (backups && !disabled));
                CHECK(schedule.schedulesSnapshots() == (snapshots && !disabled));
            }
        }
    }
}

TEST_CASE("the mode is the one that the record names")
{
    CHECK(Schedule::fromRecord({{"BackupsMode", "Interval"}}).mode == OperationModeInterval);
    CHECK(Schedule::fromRecord({{"BackupsMode", "CalendarIntervals"}}).mode == OperationModeCalendarIntervals);
    CHECK(Schedule::fromRecord({{"BackupsMode", "WhenInactive"}}).mode == OperationModeWhenInactive);
    CHECK(Schedule::fromRecord({{"BackupsMode", "Yearly"}}).mode == OperationModeWhenInactive);
    CHECK(Schedule::fromRecord({{"BackupsMode", 2}}).mode == OperationModeWhenInactive);
}

TEST_CASE("an interval counts its one unit, as it stands")
{
    CHECK(withInterval({{"Minutes", 180}}).interval == IntervalSchedule{IntervalUnitMinutes, 180});
    CHECK(withInterval({{"Hours", 72}}).interval == IntervalSchedule{IntervalUnitHours, 72});
    CHECK(withInterval({{"Days", 14}}).interval == IntervalSchedule{IntervalUnitDays, 14});
    CHECK(withInterval({{"Weeks", 999}}).interval == IntervalSchedule{IntervalUnitWeeks, 999});
    CHECK(withInterval({{"Weeks", 1000}}).interval == IntervalSchedule{IntervalUnitWeeks, 1000});
    CHECK(withInterval({{"Minutes", -5}}).interval == IntervalSchedule{IntervalUnitMinutes, -5});
    CHECK(withInterval({}).interval == IntervalSchedule{IntervalUnitMinutes, 0});
}

TEST_CASE("the units stand in the order of the pop-up")
{
    CHECK(IntervalUnitMinutes == 0);
    CHECK(IntervalUnitHours == 1);
    CHECK(IntervalUnitDays == 2);
    CHECK(IntervalUnitWeeks == 3);
}

TEST_CASE("of several units the first of weeks, days, hours and minutes counts, whatever their order in the record")
{
    CHECK(withInterval({{"Hours", 48}, {"Days", 5}}).interval == IntervalSchedule{IntervalUnitDays, 5});
    CHECK(withInterval({{"Minutes", 1}, {"Hours", 2}, {"Days", 3}, {"Weeks", 4}}).interval
          == IntervalSchedule{IntervalUnitWeeks, 4});
    CHECK(withInterval({{"Weeks", 4}, {"Days", 3}, {"Hours", 2}, {"Minutes", 1}}).interval
          == IntervalSchedule{IntervalUnitWeeks, 4});
    CHECK(withInterval({{"Minutes", 1}, {"Hours", 2}}).interval == IntervalSchedule{IntervalUnitHours, 2});
    CHECK(withInterval({{"Hours", 0}, {"Minutes", 7}}).interval == IntervalSchedule{IntervalUnitHours, 0});
}

TEST_CASE("a count of another type is absent, a boolean counts by value, a real is cut")
{
    CHECK(withInterval({{"Weeks", "3"}, {"Hours", 2}}).interval == IntervalSchedule{IntervalUnitHours, 2});
    for (const PropertyList& value : noNumbers)
        CHECK(withInterval({{"Weeks", value}}).interval == IntervalSchedule{IntervalUnitMinutes, 0});
    CHECK(withInterval({{"Days", true}}).interval == IntervalSchedule{IntervalUnitDays, 1});
    CHECK(withInterval({{"Days", 2.9}}).interval == IntervalSchedule{IntervalUnitDays, 2});
    CHECK(withInterval({{"Days", -2.9}}).interval == IntervalSchedule{IntervalUnitDays, -2});
}

TEST_CASE("a sub-record that is no dictionary is absent")
{
    for (const PropertyList& value :
         {PropertyList("x"), PropertyList(5), PropertyList(Array{Dictionary{{"Hours", 1}}})}) {
        CHECK(Schedule::fromRecord({{"Interval", value}}) == Schedule());
        CHECK(Schedule::fromRecord({{"CalendarIntervals", value}}) == Schedule());
        CHECK(Schedule::fromRecord({{"SuspendSettings", value}}) == Schedule());
    }
}

TEST_CASE("each value of an entry is read under its own key, and one that is absent stays so")
{
    CHECK(CalendarEntry::fromRecord({}) == CalendarEntry());
    CHECK(CalendarEntry::fromRecord({}).wellTyped);
    CHECK(CalendarEntry::fromRecord({{"Weekday", 0}}) == CalendarEntry{.weekday = 0});
    CHECK(CalendarEntry::fromRecord({{"Day", 31}}) == CalendarEntry{.day = 31});
    CHECK(CalendarEntry::fromRecord({{"Hour", 23}}) == CalendarEntry{.hour = 23});
    CHECK(CalendarEntry::fromRecord({{"Minute", 59}}) == CalendarEntry{.minute = 59});
    CHECK(CalendarEntry::fromRecord({{"Weekday", 7}, {"Day", 1}, {"Hour", 9}, {"Minute", 30}, {"Second", 3}})
          == CalendarEntry{7, 1, 9, 30, true});
    CHECK(CalendarEntry::fromRecord({{"Hour", 99}, {"Minute", -1}}) == CalendarEntry{.hour = 99, .minute = -1});
    CHECK(CalendarEntry{.hour = 0} != CalendarEntry());
}

TEST_CASE("an entry is well typed when each value that is there is an integer or a boolean")
{
    for (const char* const key : {"Weekday", "Day", "Hour", "Minute"}) {
        CAPTURE(key);
        CHECK(CalendarEntry::fromRecord({{key, 1}}).wellTyped);
        CHECK(CalendarEntry::fromRecord({{key, true}}).wellTyped);
        CHECK_FALSE(CalendarEntry::fromRecord({{key, 1.0}}).wellTyped);
        for (const PropertyList& value : noNumbers)
            CHECK_FALSE(CalendarEntry::fromRecord({{key, value}}).wellTyped);
        // One bad value is enough, wherever it stands among good ones.
        Dictionary four{{"Weekday", 1}, {"Day", 1}, {"Hour", 1}, {"Minute", 1}};
        CHECK(CalendarEntry::fromRecord(four).wellTyped);
        four.set(key, "1");
        CHECK_FALSE(CalendarEntry::fromRecord(four).wellTyped);
    }
    CHECK(CalendarEntry::fromRecord({{"Second", "1"}}).wellTyped);
}

TEST_CASE("a value of an entry is taken by value when it is a number, else absent")
{
    CHECK(CalendarEntry::fromRecord({{"Hour", true}}).hour == 1);
    CHECK(CalendarEntry::fromRecord({{"Hour", 9.9}}).hour == 9);
    CHECK(CalendarEntry::fromRecord({{"Hour", -0.5}}).hour == 0);
    for (const PropertyList& value : noNumbers) {
        CHECK(CalendarEntry::fromRecord({{"Weekday", value}}).weekday == std::nullopt);
        CHECK(CalendarEntry::fromRecord({{"Day", value}}).day == std::nullopt);
        CHECK(CalendarEntry::fromRecord({{"Hour", value}}).hour == std::nullopt);
        CHECK(CalendarEntry::fromRecord({{"Minute", value}}).minute == std::nullopt);
    }
}

TEST_CASE(
    "the entries of a calendar keep their order, also those that are not shown, and what is no dictionary is left out")
{
    const Schedule schedule =
        withEntries({Dictionary{{"Hour", 9}, {"Minute", 30}}, "x", 7, Array(), Dictionary{{"Weekday", 0}, {"Hour", 8}},
                     Dictionary(), Dictionary{{"Day", 1}, {"Hour", 9}}});
    REQUIRE(schedule.entries.size() == 4);
    CHECK(schedule.entries[0] == CalendarEntry{.hour = 9, .minute = 30});
    CHECK(schedule.entries[1] == CalendarEntry{.weekday = 0, .hour = 8});
    CHECK(schedule.entries[2] == CalendarEntry());
    CHECK(schedule.entries[3] == CalendarEntry{.day = 1, .hour = 9});
    CHECK(withEntries({}).entries.empty());
    CHECK(Schedule::fromRecord({{"CalendarIntervals", Dictionary{{"Intervals", Dictionary{{"Hour", 1}}}}}})
          == Schedule());
}

TEST_CASE("as soon as possible is the calendar's own boolean")
{
    const auto asap = [](const PropertyList& value) {
        return Schedule::fromRecord({{"CalendarIntervals", Dictionary{{"ASAP", value}}}}).asap;
    };
    CHECK(asap(true));
    CHECK(asap(1));
    CHECK_FALSE(asap(false));
    for (const PropertyList& value : noNumbers)
        CHECK_FALSE(asap(value));
    CHECK_FALSE(Schedule::fromRecord({{"ASAP", true}}).asap);
    CHECK_FALSE(Schedule::fromRecord({{"Interval", Dictionary{{"ASAP", true}}}}).asap);
}

TEST_CASE("suspension times are there with their sub-record, whether it is in force or not, missing ones as 0")
{
    const auto times = [](const Dictionary& suspension) {
        return Schedule::fromRecord({{"SuspendSettings", suspension}}).suspension;
    };
    CHECK(times({{"StartHour", 22}, {"StartMinute", 15}, {"EndHour", 6}, {"EndMinute", 45}})
          == SuspensionTimes{22, 15, 6, 45});
    CHECK(times({{"StartHour", 1}}) == SuspensionTimes{.startHour = 1});
    CHECK(times({{"StartMinute", 2}}) == SuspensionTimes{.startMinute = 2});
    CHECK(times({{"EndHour", 3}}) == SuspensionTimes{.endHour = 3});
    CHECK(times({{"EndMinute", 4}}) == SuspensionTimes{.endMinute = 4});
    CHECK(times({}) == SuspensionTimes{0, 0, 0, 0});
    CHECK(SuspensionTimes() == SuspensionTimes{0, 0, 0, 0});
    CHECK(times({{"StartHour", 99}, {"EndHour", "6"}, {"EndMinute", true}}) == SuspensionTimes{99, 0, 0, 1});
    CHECK_FALSE(Schedule::fromRecord({{"Suspend", true}}).suspension);
    CHECK_FALSE(Schedule::fromRecord({{"SuspendSettings", Dictionary{{"StartHour", 1}}}}).suspend);
}

TEST_CASE("the default record reads as a schedule that does nothing and stands ready for an hour")
{
    const Schedule schedule = Schedule::fromRecord(defaultScheduleSettings());
    Schedule expected;
    expected.interval = {IntervalUnitHours, 1};
    expected.suspension = SuspensionTimes{22, 0, 6, 0};
    CHECK(schedule == expected);
    CHECK_FALSE(schedule.schedulesBackups());
    CHECK_FALSE(schedule.schedulesSnapshots());
}

TEST_CASE("a whole record is read in one go, and keys that it does not know change nothing")
{
    const Schedule schedule = Schedule::fromRecord({
        {"Unknown", Dictionary{{"Hours", 3}}},
        {"Disabled", true},
        {"Backups", true},
        {"BackupsMode", "CalendarIntervals"},
        {"WhenInactive", Dictionary{{"Hours", 8}}},
        {"Interval", Dictionary{{"Days", 2}}},
        {"CalendarIntervals", Dictionary{{"ASAP", true}, {"Intervals", Array{Dictionary{{"Hour", 4}, {"Minute", 5}}}}}},
        {"Suspend", true},
        {"SuspendSettings", Dictionary{{"StartHour", 1}, {"EndMinute", 2}}},
        {"Snapshots", true},
    });
    Schedule expected;
    expected.disabled = true;
    expected.backups = true;
    expected.mode = OperationModeCalendarIntervals;
    expected.interval = {IntervalUnitDays, 2};
    expected.entries = {CalendarEntry{.hour = 4, .minute = 5}};
    expected.asap = true;
    expected.suspend = true;
    expected.suspension = SuspensionTimes{.startHour = 1, .endMinute = 2};
    expected.snapshots = true;
    CHECK(schedule == expected);
}
