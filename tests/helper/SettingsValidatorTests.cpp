#include "helper/SettingsValidator.h"
#include "protocol/ScheduleRanges.h"
#include "tests/helper/SettingsRecords.h"

#include <cmath>
#include <doctest/doctest.h>
#include <limits>
#include <string>
#include <vector>

using namespace helper;

using platform::Array;
using platform::Dictionary;
using platform::PropertyList;

namespace {

std::optional<SettingsFault> faultIn(const Dictionary& settings)
{
    return SettingsValidator::faultInSettings(settings);
}

SettingsFault missing(std::string key)
{
    return {BRVErrorMissingValue, std::move(key), {}};
}

SettingsFault wrongType(std::string key, std::string expected)
{
    return {BRVErrorWrongType, std::move(key), std::move(expected)};
}

SettingsFault unknown(std::string key)
{
    return {BRVErrorUnknownKey, std::move(key), {}};
}

Dictionary suspendSettingsWith(std::string_view key, PropertyList value)
{
    auto suspend = *defaultScheduleSettings().dictionaryForKey("SuspendSettings");
    suspend.set(key, std::move(value));
    return settingsWith("SuspendSettings", std::move(suspend));
}

const std::vector<const char*> requiredKeys{
    "Backups",
    "BackupsMode",
    "Suspend",
    "SuspendSettings",
    "DontRunWhenPassive",
    "DontRunWithSleepPreventers",
    "DontRunWhenNotNetworkWired",
};
const std::vector<const char*> optionalKeys{"WhenInactive", "Interval", "AllowBattery", "Snapshots"};
const std::vector<const char*> booleanKeys{
    "Backups",      "Suspend",   "DontRunWhenPassive", "DontRunWithSleepPreventers", "DontRunWhenNotNetworkWired",
    "AllowBattery", "Snapshots",
};
const std::vector<const char*> dictionaryKeys{"WhenInactive", "Interval", "CalendarIntervals", "SuspendSettings"};

struct Range {
    const char* key;
    std::int64_t lowest;
    std::int64_t highest;
    std::string expected() const { return "integer from " + std::to_string(lowest) + " to " + std::to_string(highest); }
};

const std::vector<Range> suspendRanges{
    {"StartHour", 0, 23}, {"StartMinute", 0, 59}, {"EndHour", 0, 23}, {"EndMinute", 0, 59}};
const std::vector<Range> unitRanges{{"Minutes", 1, 999}, {"Hours", 1, 999}, {"Days", 1, 999}, {"Weeks", 1, 999}};
const std::vector<Range> entryRanges{{"Weekday", 0, 7}, {"Hour", 0, 23}, {"Minute", 0, 59}, {"Day", 1, 31}};

// `make` puts a value under the range's key into an otherwise good record.
template <class Make>
void checkRanges(const std::vector<Range>& ranges, Make make)
{
    for (const auto& range : ranges) {
        CAPTURE(range.key);
        CHECK_FALSE(faultIn(make(range.key, range.lowest)));
        CHECK_FALSE(faultIn(make(range.key, range.highest)));
        CHECK_FALSE(faultIn(make(range.key, static_cast<double>(range.highest))));
        CHECK_FALSE(faultIn(make(range.key, true)));
        auto outOfRange = wrongType(range.key, range.expected());
        for (auto value : {range.lowest - 1, range.highest + 1, std::numeric_limits<std::int64_t>::min(),
                           std::numeric_limits<std::int64_t>::max()})
            CHECK(faultIn(make(range.key, value)) == outOfRange);
        for (auto value : {range.highest - 0.5, 1e300, std::nan(""), std::numeric_limits<double>::infinity()})
            CHECK(faultIn(make(range.key, value)) == outOfRange);
        CHECK(faultIn(make(range.key, "1")) == wrongType(range.key, "integer"));
        CHECK(faultIn(make(range.key, Array{1})) == wrongType(range.key, "integer"));
    }
}

} // namespace

TEST_CASE("the default settings are valid")
{
    CHECK_FALSE(faultIn(defaultScheduleSettings()));
}

TEST_CASE("every key that the editor always writes is required")
{
    for (const auto* key : requiredKeys) {
        CAPTURE(key);
        CHECK(faultIn(settingsWithout(key)) == missing(key));
    }
    CHECK(faultIn({}) == missing("Backups"));
}

TEST_CASE("the keys that the editor may leave out are optional")
{
    for (const auto* key : optionalKeys) {
        CAPTURE(key);
        CHECK_FALSE(faultIn(settingsWithout(key)));
    }
}

TEST_CASE("a key that is not in the record's table is unknown, also the one that only the helper sets")
{
    for (const auto* key : {"Disabled", "backups", "", "Backups ", "Minutes"}) {
        CAPTURE(key);
        CHECK(faultIn(settingsWith(key, true)) == unknown(key));
    }
}

TEST_CASE("a boolean is a number of value 0 or 1")
{
    for (const auto* key : booleanKeys) {
        CAPTURE(key);
        for (const auto& value : {PropertyList(true), PropertyList(0), PropertyList(1), PropertyList(1.0)})
            CHECK_FALSE(faultIn(settingsWith(key, value)));
        for (const auto& value : {PropertyList(2), PropertyList(-1), PropertyList(0.5), PropertyList("true"),
                                  PropertyList(Array()), PropertyList(Dictionary()), PropertyList(std::nan(""))})
            CHECK(faultIn(settingsWith(key, value)) == wrongType(key, "boolean"));
    }
}

TEST_CASE("the mode is a string that names one of the three")
{
    CHECK(faultIn(settingsWith("BackupsMode", 1)) == wrongType("BackupsMode", "string"));
    for (const auto* name : {"", "interval", "Always"})
        CHECK(faultIn(settingsWith("BackupsMode", name))
              == wrongType("BackupsMode", "WhenInactive, Interval or CalendarIntervals"));
}

TEST_CASE("a sub-record is a dictionary")
{
    for (const auto* key : dictionaryKeys) {
        CAPTURE(key);
        for (const auto& value : {PropertyList(1), PropertyList("text"), PropertyList(Array())})
            CHECK(faultIn(settingsWith(key, value)) == wrongType(key, "dictionary"));
    }
}

TEST_CASE("what the sub-record of the when-inactive mode holds does not matter")
{
    CHECK_FALSE(faultIn(settingsWith("WhenInactive", Dictionary{{"Anything", "at all"}})));
}

TEST_CASE("the suspension has four integers in the ranges of a clock and nothing else")
{
    checkRanges(suspendRanges, suspendSettingsWith);
    CHECK(faultIn(suspendSettingsWith("Hour", 1)) == unknown("Hour"));
    for (const auto& range : suspendRanges) {
        auto suspend = *defaultScheduleSettings().dictionaryForKey("SuspendSettings");
        suspend.remove(range.key);
        CHECK(faultIn(settingsWith("SuspendSettings", suspend)) == missing(range.key));
    }
}

TEST_CASE("a suspension may end before it starts, and when it starts")
{
    CHECK_FALSE(faultIn(suspendSettingsWith("EndHour", 22)));
    CHECK_FALSE(faultIn(suspendSettingsWith("EndHour", 1)));
}

TEST_CASE("an interval has exactly one unit, from 1 to 999")
{
    checkRanges(unitRanges, [](auto key, auto value) { return intervalSettings({{key, value}}); });
    CHECK(faultIn(intervalSettings({})) == missing("Interval"));
    CHECK(faultIn(intervalSettings({{"Hours", 48}, {"Days", 5}})) == wrongType("Interval", "dictionary of one unit"));
    CHECK(faultIn(intervalSettings({{"Seconds", 5}})) == unknown("Seconds"));
}

TEST_CASE("only the mode in force needs its sub-record")
{
    auto interval = settingsWithout("Interval");
    interval.set("BackupsMode", "Interval");
    CHECK(faultIn(interval) == missing("Interval"));
    CHECK(faultIn(settingsWith("BackupsMode", "CalendarIntervals")) == missing("CalendarIntervals"));
    auto calendar = calendarSettings({});
    calendar.set("CalendarIntervals", Dictionary{{"ASAP", true}});
    CHECK(faultIn(calendar) == missing("Intervals"));
    CHECK_FALSE(faultIn(settingsWith("Interval", Dictionary())));
    CHECK_FALSE(faultIn(settingsWith("CalendarIntervals", Dictionary())));
}

TEST_CASE("a sub-record that is not in force is checked all the same")
{
    CHECK(faultIn(settingsWith("Interval", Dictionary{{"Minutes", 0}}))
          == wrongType("Minutes", "integer from 1 to 999"));
    CHECK(faultIn(settingsWith("CalendarIntervals", Dictionary{{"Interval", Array()}})) == unknown("Interval"));
}

TEST_CASE("the entries of a calendar hold integers in the ranges of a calendar and nothing else")
{
    checkRanges(entryRanges, [](auto key, auto value) {
        return calendarSettings({Dictionary{{"Hour", 1}, {"Minute", 1}}, Dictionary{{key, value}}});
    });
    CHECK(faultIn(calendarSettings({Dictionary{{"Month", 1}}})) == unknown("Month"));
    CHECK(faultIn(calendarSettings({"9:30"})) == wrongType("Intervals", "array of dictionaries"));
    auto settings = calendarSettings({});
    CHECK_FALSE(faultIn(settings));
    settings.set("CalendarIntervals", Dictionary{{"Intervals", Dictionary()}});
    CHECK(faultIn(settings) == wrongType("Intervals", "array"));
    settings.set("CalendarIntervals", Dictionary{{"Intervals", Array()}, {"ASAP", "yes"}});
    CHECK(faultIn(settings) == wrongType("ASAP", "boolean"));
}

TEST_CASE("a calendar has at most ten thousand entries")
{
    Array entries(ScheduleRanges::maximumIntervals, Dictionary{{"Hour", 1}, {"Minute", 1}});
    CHECK_FALSE(faultIn(calendarSettings(entries)));
    entries.push_back(entries.front());
    CHECK(faultIn(calendarSettings(entries)) == wrongType("Intervals", "array of at most 10000 entries"));
}

TEST_CASE("a missing value is reported only when nothing else is wrong")
{
    auto settings = settingsWithout("Backups");
    settings.set("Snapshots", "yes");
    CHECK(faultIn(settings) == wrongType("Snapshots", "boolean"));
}

TEST_CASE("a fault becomes an error of the product with the key and the expected type")
{
    auto error = wrongType("Hour", "integer from 0 to 23").error();
    CHECK(error.domain == BRVErrorDomain);
    CHECK(error.code == BRVErrorWrongType);
    CHECK(error.userInfo == Dictionary{{"key", "Hour"}, {"expected", "integer from 0 to 23"}});
    CHECK(missing("Suspend").error().userInfo == Dictionary{{"key", "Suspend"}});
}

TEST_CASE("automatic updates are one boolean")
{
    auto fault = [](const Dictionary& record) { return SettingsValidator::faultInAutoUpdates(record); };
    CHECK_FALSE(fault({{"Enabled", true}}));
    CHECK_FALSE(fault({{"Enabled", 0}}));
    CHECK(fault({}) == missing("Enabled"));
    CHECK(fault({{"Enabled", "yes"}}) == wrongType("Enabled", "boolean"));
    CHECK(fault({{"Enabled", true}, {"Allow", true}}) == unknown("Allow"));
}
