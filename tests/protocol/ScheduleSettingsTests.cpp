#include "protocol/ScheduleRanges.h"
#include "protocol/ScheduleSettings.h"

#include <doctest/doctest.h>
#include <limits>
#include <string_view>

using namespace std::string_view_literals;
using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::PropertyList;

namespace {

constexpr auto largest = std::numeric_limits<std::int64_t>::max();
constexpr auto smallest = std::numeric_limits<std::int64_t>::min();

} // namespace

TEST_CASE("the keys of the record have their names")
{
    CHECK(ScheduleKey::Disabled == "Disabled"sv);
    CHECK(ScheduleKey::Backups == "Backups"sv);
    CHECK(ScheduleKey::BackupsMode == "BackupsMode"sv);
    CHECK(ScheduleKey::Suspend == "Suspend"sv);
    CHECK(ScheduleKey::SuspendSettings == "SuspendSettings"sv);
    CHECK(ScheduleKey::DontRunWhenPassive == "DontRunWhenPassive"sv);
    CHECK(ScheduleKey::DontRunWithSleepPreventers == "DontRunWithSleepPreventers"sv);
    CHECK(ScheduleKey::DontRunWhenNotNetworkWired == "DontRunWhenNotNetworkWired"sv);
    CHECK(ScheduleKey::AllowBattery == "AllowBattery"sv);
    CHECK(ScheduleKey::Snapshots == "Snapshots"sv);
}

TEST_CASE("the keys of the sub-records have their names")
{
    CHECK(ScheduleKey::StartHour == "StartHour"sv);
    CHECK(ScheduleKey::StartMinute == "StartMinute"sv);
    CHECK(ScheduleKey::EndHour == "EndHour"sv);
    CHECK(ScheduleKey::EndMinute == "EndMinute"sv);
    CHECK(ScheduleKey::Minutes == "Minutes"sv);
    CHECK(ScheduleKey::Hours == "Hours"sv);
    CHECK(ScheduleKey::Days == "Days"sv);
    CHECK(ScheduleKey::Weeks == "Weeks"sv);
    CHECK(ScheduleKey::Intervals == "Intervals"sv);
    CHECK(ScheduleKey::ASAP == "ASAP"sv);
    CHECK(ScheduleKey::Weekday == "Weekday"sv);
    CHECK(ScheduleKey::Hour == "Hour"sv);
    CHECK(ScheduleKey::Minute == "Minute"sv);
    CHECK(ScheduleKey::Day == "Day"sv);
}

TEST_CASE("the modes stand in the order of the pop-up, and any other place counts as calendar intervals")
{
    CHECK(OperationModeCount == 3);
    CHECK(backupsModeForIndex(0) == "WhenInactive"sv);
    CHECK(backupsModeForIndex(1) == "Interval"sv);
    CHECK(backupsModeForIndex(2) == "CalendarIntervals"sv);
    for (const int index : {-1, 3, 4, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        CAPTURE(index);
        CHECK(backupsModeForIndex(index) == "CalendarIntervals"sv);
    }
    CHECK(BackupsModeWhenInactive == "WhenInactive"sv);
    CHECK(BackupsModeInterval == "Interval"sv);
    CHECK(BackupsModeCalendarIntervals == "CalendarIntervals"sv);
}

TEST_CASE("only the three modes' values are modes, spelled exactly so")
{
    for (const auto text : {"WhenInactive"sv, "Interval"sv, "CalendarIntervals"sv}) {
        CAPTURE(text);
        CHECK(isBackupsMode(text));
    }
    for (const auto text :
         {""sv, "interval"sv, "Interval "sv, "Intervals"sv, "Interva"sv, "CalendarInterval"sv, "WhenInactive\0"sv}) {
        CAPTURE(text);
        CHECK_FALSE(isBackupsMode(text));
    }
}

TEST_CASE("a record's mode is the one that it names; none, an unknown one and no string are when inactive")
{
    CHECK(operationModeOfSettings({{"BackupsMode", "WhenInactive"}}) == OperationModeWhenInactive);
    CHECK(operationModeOfSettings({{"BackupsMode", "Interval"}}) == OperationModeInterval);
    CHECK(operationModeOfSettings({{"BackupsMode", "CalendarIntervals"}}) == OperationModeCalendarIntervals);
    CHECK(operationModeOfSettings({}) == OperationModeWhenInactive);
    CHECK(operationModeOfSettings({{"Mode", "Interval"}}) == OperationModeWhenInactive);
    for (const PropertyList& value :
         {PropertyList("Weekly"), PropertyList(""), PropertyList("interval"), PropertyList(1), PropertyList(2.0),
          PropertyList(true), PropertyList(Array{"Interval"}), PropertyList(Dictionary{{"Interval", 1}}),
          PropertyList(Data()), PropertyList(Date{1})})
        CHECK(operationModeOfSettings({{"BackupsMode", value}}) == OperationModeWhenInactive);
}

TEST_CASE("the modes have their places in the pop-up")
{
    CHECK(OperationModeWhenInactive == 0);
    CHECK(OperationModeInterval == 1);
    CHECK(OperationModeCalendarIntervals == 2);
}

TEST_CASE("a range holds its ends and what lies between")
{
    constexpr ScheduleRange range{2, 4};
    const std::int64_t inside[] = {2, 3, 4};
    const std::int64_t outside[] = {1, 5, -3, largest, smallest};
    for (const std::int64_t value : inside) {
        CAPTURE(value);
        CHECK(range.contains(value));
        CHECK(range.clamp(value) == value);
    }
    for (const std::int64_t value : outside) {
        CAPTURE(value);
        CHECK_FALSE(range.contains(value));
        CHECK(range.clamp(value) == (value < 2 ? 2 : 4));
    }
}

TEST_CASE("the values of a record have their ranges")
{
    CHECK(ScheduleRanges::intervalCount == ScheduleRange{1, 999});
    CHECK(ScheduleRanges::hour == ScheduleRange{0, 23});
    CHECK(ScheduleRanges::minute == ScheduleRange{0, 59});
    CHECK(ScheduleRanges::weekday == ScheduleRange{0, 7});
    CHECK(ScheduleRanges::day == ScheduleRange{1, 31});
    CHECK(ScheduleRanges::maximumIntervals == 10'000);
    CHECK_FALSE(ScheduleRange{1, 2} == ScheduleRange{1, 3});
    CHECK_FALSE(ScheduleRange{1, 2} == ScheduleRange{0, 2});
}

TEST_CASE("a fresh installation schedules nothing: the record key by key, of the types that are written")
{
    using Type = PropertyList::Type;
    const Dictionary record = defaultScheduleSettings();
    CHECK(record.size() == 11);
    for (const char* const key : {"Backups", "Suspend", "DontRunWhenPassive", "DontRunWithSleepPreventers",
                                  "DontRunWhenNotNetworkWired", "AllowBattery", "Snapshots"}) {
        CAPTURE(key);
        REQUIRE(record.find(key));
        CHECK(record.find(key)->type() == Type::Boolean);
        CHECK_FALSE(record.boolForKey(key));
    }
    CHECK(record.find("BackupsMode")->string()[0] == "WhenInactive");
    CHECK(*record.find("WhenInactive") == PropertyList(Dictionary()));
    CHECK(*record.find("Interval") == PropertyList(Dictionary{{"Hours", 1}}));
    CHECK(record.find("Interval")->dictionary()->find("Hours")->type() == Type::Integer);
    CHECK(*record.find("SuspendSettings")
          == PropertyList(Dictionary{{"StartHour", 22}, {"StartMinute", 0}, {"EndHour", 6}, {"EndMinute", 0}}));
    CHECK_FALSE(record.find("Disabled"));
    CHECK_FALSE(record.find("CalendarIntervals"));
}
