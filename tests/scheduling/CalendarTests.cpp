#include "tests/scheduling/Story.h"

#include <doctest/doctest.h>

using platform::Array;
using platform::Dictionary;
using Lines = Story::Lines;

namespace {

// Local days and times of the starts within two weeks from Monday, 2026-06-01.
Lines startsOf(const Array& entries)
{
    Lines starts;
    for (const auto& line : Story(calendarRecord(entries)).lasting(days(14)).play()) {
        if (line.find(" start ") != std::string::npos)
            starts.push_back(line.substr(0, 11));
    }
    return starts;
}

} // namespace

TEST_CASE("an entry without a day gives a moment on every day")
{
    const auto starts = startsOf({entry(9, 30)});
    CHECK(starts.size() == 14);
    CHECK(starts.front() == "06-01 09:30");
    CHECK(starts.back() == "06-14 09:30");
}

TEST_CASE("weekdays count from Monday, and Sunday is both 0 and 7")
{
    CHECK(startsOf({Dictionary{{"Weekday", 1}, {"Hour", 9}}}) == Lines{"06-01 09:00", "06-08 09:00"});
    CHECK(startsOf({Dictionary{{"Weekday", 0}, {"Hour", 9}}}) == Lines{"06-07 09:00", "06-14 09:00"});
    CHECK(startsOf({Dictionary{{"Weekday", 7}, {"Hour", 9}}}) == Lines{"06-07 09:00", "06-14 09:00"});
}

TEST_CASE("a missing hour or minute is 0")
{
    CHECK(startsOf({Dictionary{{"Weekday", 2}}}) == Lines{"06-02 00:00", "06-09 00:00"});
    CHECK(startsOf({Dictionary{{"Day", 3}, {"Minute", 7}}}) == Lines{"06-03 00:07"});
}

TEST_CASE("a day of the month and a weekday must both match")
{
    CHECK(startsOf({Dictionary{{"Day", 5}, {"Weekday", 5}, {"Hour", 1}}}) == Lines{"06-05 01:00"});
    CHECK(startsOf({Dictionary{{"Day", 5}, {"Weekday", 6}, {"Hour", 1}}}).empty());
}

TEST_CASE("a month without that day has no moment")
{
    CHECK(Story(calendarRecord({Dictionary{{"Day", 31}, {"Hour", 12}}})).lasting(days(61)).play()
          == Lines{"07-31 12:00:00 start 07-31 12:00:00", "07-31 12:00:00 end well"});
}

TEST_CASE("an entry that says no day and no hour, or is out of range or of a wrong type, gives no moment")
{
    CHECK(startsOf({Dictionary{{"Minute", 30}}}).empty());
    CHECK(startsOf({Dictionary()}).empty());
    CHECK(startsOf({Dictionary{{"Hour", 24}}}).empty());
    CHECK(startsOf({Dictionary{{"Hour", -1}}}).empty());
    CHECK(startsOf({Dictionary{{"Hour", 1}, {"Minute", 60}}}).empty());
    CHECK(startsOf({Dictionary{{"Weekday", 8}, {"Hour", 1}}}).empty());
    CHECK(startsOf({Dictionary{{"Day", 0}, {"Hour", 1}}}).empty());
    CHECK(startsOf({Dictionary{{"Day", 32}, {"Hour", 1}}}).empty());
    CHECK(startsOf({Dictionary{{"Hour", 9.0}}}).empty());
    CHECK(startsOf({Dictionary{{"Hour", "9"}}}).empty());
    CHECK(startsOf({Dictionary{{"Hour", 9}, {"Minute", "0"}}}).empty());
    CHECK(startsOf({"09:00", 9}).empty());
    CHECK(startsOf({Dictionary{{"Hour", true}, {"Weekday", true}}}) == Lines{"06-01 01:00", "06-08 01:00"});
}

TEST_CASE("equal instants are one moment")
{
    const Array entries{entry(9, 0), Dictionary{{"Weekday", 1}, {"Hour", 9}}, entry(9, 0)};
    CHECK(Story(calendarRecord(entries)).play()
          == Lines{"06-01 09:00:00 start 06-01 09:00:00", "06-01 09:00:00 end well"});
}

TEST_CASE("only moments after the schedule came into force count")
{
    CHECK(Story(dailyRecord(0, 0, true)).lasting(at(12, 0)).play().empty());
    CHECK(Story(dailyRecord(9, 0)).in("UTC", "2026-06-01T09:00:01Z").lasting(at(2, 0)).play().empty());
}

TEST_CASE("a moment stays due for 600 seconds and is missed at the first look after that")
{
    auto story = Story(dailyRecord(9, 0)).first({{"Battery", true}});
    CHECK(Story(story).set(at(9, 10), "Battery", false).play()
          == Lines{"06-01 09:00:00 blocked 06-01 09:00:00 battery", "06-01 09:10:00 start 06-01 09:00:00",
                   "06-01 09:10:00 end well"});
    CHECK(Story(story).set(at(9, 10, 1), "Battery", false).play()
          == Lines{"06-01 09:00:00 blocked 06-01 09:00:00 battery", "06-01 09:10:01 missed 06-01 09:00:00 battery"});
}

TEST_CASE("with ASAP the earliest moment stays due, and one backup catches up for all")
{
    CHECK(Story(calendarRecord({entry(9, 0), entry(10, 0), entry(11, 0)}, true))
              .first({{"Battery", true}})
              .set(at(15, 0), "Battery", false)
              .play()
          == Lines{"06-01 09:00:00 blocked 06-01 09:00:00 battery", "06-01 15:00:00 start 06-01 09:00:00",
                   "06-01 15:00:00 end well"});
}

TEST_CASE("with ASAP, of the moments older than 31 days the latest counts")
{
    auto story = Story(dailyRecord(9, 0, true)).sleep(at(1, 0), days(40) + at(12, 0)).lasting(days(41));
    CHECK(story.play() == Lines{"07-11 12:00:00 start 06-10 09:00:00", "07-11 12:00:00 end well"});
    // One second less, and the moment of the day after is the latest that is old enough.
    CHECK(Story(dailyRecord(9, 0, true)).sleep(at(1, 0), days(40) + at(9, 0)).lasting(days(40) + at(9, 0)).play()
          == Lines{"07-11 09:00:00 start 06-09 09:00:00", "07-11 09:00:00 end well"});
}

TEST_CASE("without ASAP, moments older than 31 days are not told")
{
    CHECK(Story(dailyRecord(9, 0)).sleep(at(1, 0), days(40) + at(12, 0)).lasting(days(40) + at(12, 0)).play()
          == Lines{"07-11 12:00:00 missed 07-11 09:00:00 x31 asleep"});
}

TEST_CASE("up to five missed moments are told one by one, oldest first, and more as one with their number")
{
    const Array five{entry(1, 0), entry(2, 0), entry(3, 0), entry(4, 0), entry(5, 0)};
    CHECK(Story(calendarRecord(five)).sleep(at(0, 30), at(8, 0)).play()
          == Lines{"06-01 08:00:00 missed 06-01 01:00:00 asleep", "06-01 08:00:00 missed 06-01 02:00:00 asleep",
                   "06-01 08:00:00 missed 06-01 03:00:00 asleep", "06-01 08:00:00 missed 06-01 04:00:00 asleep",
                   "06-01 08:00:00 missed 06-01 05:00:00 asleep"});
    auto six = five;
    six.emplace_back(entry(6, 0));
    CHECK(Story(calendarRecord(six)).sleep(at(0, 30), at(8, 0)).play()
          == Lines{"06-01 08:00:00 missed 06-01 06:00:00 x6 asleep"});
}

TEST_CASE("missed moments are told before anything else of the look")
{
    CHECK(Story(calendarRecord({entry(8, 0), entry(9, 0)})).sleep(at(7, 0), at(9, 5)).play()
          == Lines{"06-01 09:05:00 missed 06-01 08:00:00 asleep", "06-01 09:05:00 start 06-01 09:00:00",
                   "06-01 09:05:00 end well"});
}

TEST_CASE("moments that come while a backup runs are settled by it if it succeeds")
{
    CHECK(Story(calendarRecord({entry(8, 0), entry(9, 0)})).backupsTake(at(2, 0)).play()
          == Lines{"06-01 08:00:00 start 06-01 08:00:00", "06-01 09:00:00 blocked 06-01 09:00:00 running",
                   "06-01 10:00:00 end well"});
}

TEST_CASE("moments that come while a backup runs are missed when it has failed, not before")
{
    CHECK(Story(calendarRecord({entry(8, 0), entry(9, 0)}))
              .backupsTake(at(2, 0))
              .results({false})
              .lasting(at(10, 5))
              .play()
          == Lines{"06-01 08:00:00 start 06-01 08:00:00", "06-01 09:00:00 blocked 06-01 09:00:00 running",
                   "06-01 10:00:00 end badly", "06-01 10:00:00 missed 06-01 09:00:00 running",
                   "06-01 10:05:00 start 06-01 10:05:00"});
    CHECK(Story(calendarRecord({entry(8, 0), entry(9, 55)}))
              .backupsTake(at(2, 0))
              .results({false})
              .lasting(at(10, 5))
              .play()
          == Lines{"06-01 08:00:00 start 06-01 08:00:00", "06-01 09:55:00 blocked 06-01 09:55:00 running",
                   "06-01 10:00:00 end badly", "06-01 10:00:00 start 06-01 09:55:00"});
}

TEST_CASE("the reasons of a missed moment are those that held when its time was over")
{
    const auto story =
        Story(calendarRecord({entry(8, 0), entry(9, 0)})).backupsTake(at(2, 0)).results({false}).lasting(at(10, 1));
    const auto missed = [](const Story& told) { return told.play().back(); };
    CHECK(missed(Story(story).set(at(9, 9), "Battery", true))
          == "06-01 10:00:00 missed 06-01 09:00:00 battery running");
    CHECK(missed(Story(story).set(at(9, 10), "Battery", true))
          == "06-01 10:00:00 missed 06-01 09:00:00 battery running");
    CHECK(missed(Story(story).set(at(9, 10, 1), "Battery", true)) == "06-01 10:00:00 missed 06-01 09:00:00 running");
    CHECK(missed(Story(story).set(at(9, 0), "Battery", true).set(at(9, 10), "Battery", false))
          == "06-01 10:00:00 missed 06-01 09:00:00 running");
    CHECK(missed(Story(story).sleep(at(9, 10), at(9, 10, 1))).ends_with(" asleep"));
    CHECK(missed(Story(story).setClockBy(at(9, 10), 1)).ends_with(" asleep"));
}

TEST_CASE("a moment whose end is seen after waking was not slept over")
{
    CHECK(Story(dailyRecord(9, 0)).first({{"Battery", true}}).sleep(at(8, 0), at(9, 10)).lasting(at(9, 11)).play()
          == Lines{"06-01 09:10:00 blocked 06-01 09:00:00 battery", "06-01 09:10:01 missed 06-01 09:00:00 battery"});
}
