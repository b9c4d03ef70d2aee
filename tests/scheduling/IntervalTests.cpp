#include "tests/scheduling/Story.h"

#include <doctest/doctest.h>

using platform::Dictionary;
using Lines = Story::Lines;

namespace {

ScheduleSettings interval(const Dictionary& subRecord)
{
    return {{"Backups", true}, {"BackupsMode", "Interval"}, {"Interval", subRecord}};
}

} // namespace

TEST_CASE("an interval counts from the moment at which the schedule came into force when there was no backup")
{
    CHECK(Story(intervalRecord("Hours", 9)).play()
          == Lines{"06-01 09:00:00 start 06-01 09:00:00", "06-01 09:00:00 end well",
                   "06-01 18:00:00 start 06-01 18:00:00", "06-01 18:00:00 end well"});
}

TEST_CASE("an interval counts from the last start, even from before the schedule")
{
    CHECK(Story(intervalRecord("Hours", 2)).lastStart("2026-05-31T23:00:00Z").lasting(at(2, 0)).play()
          == Lines{"06-01 01:00:00 start 06-01 01:00:00", "06-01 01:00:00 end well"});
    CHECK(Story(intervalRecord("Minutes", 30)).lastStart("2026-05-31T23:00:00Z").lasting(0).play()
          == Lines{"06-01 00:00:00 start 05-31 23:30:00", "06-01 00:00:00 end well"});
}

TEST_CASE("an interval of minutes counts from the start of a backup, not from its end")
{
    CHECK(Story(intervalRecord("Minutes", 30)).backupsTake(600).lasting(at(1, 0)).play()
          == Lines{"06-01 00:30:00 start 06-01 00:30:00", "06-01 00:40:00 end well",
                   "06-01 01:00:00 start 06-01 01:00:00"});
}

TEST_CASE("the first of weeks, days, hours and minutes is the interval, kept within 1 and 999")
{
    const auto firstStart = [](const Dictionary& subRecord) {
        const auto lines = Story(interval(subRecord)).lasting(days(8)).play();
        return lines.empty() ? "" : lines[0].substr(0, 14);
    };
    CHECK(firstStart({{"Minutes", 5}, {"Hours", 3}}) == "06-01 03:00:00");
    CHECK(firstStart({{"Hours", 3}, {"Days", 2}}) == "06-03 00:00:00");
    CHECK(firstStart({{"Days", 2}, {"Weeks", 1}}) == "06-08 00:00:00");
    CHECK(firstStart({{"Minutes", 0}}) == "06-01 00:01:00");
    CHECK(firstStart({{"Minutes", -5}}) == "06-01 00:01:00");
    CHECK(firstStart({{"Minutes", 100'000}}) == "06-01 16:39:00");
    CHECK(firstStart({{"Minutes", 2.9}}) == "06-01 00:02:00");
    CHECK(firstStart({{"Hours", true}}) == "06-01 01:00:00");
    CHECK(firstStart({{"Hours", "3"}, {"Minutes", 7}}) == "06-01 00:07:00");
    CHECK(firstStart({}) == "06-01 00:01:00");
}

TEST_CASE("an interval is never due earlier than 60 seconds after the end of a backup")
{
    CHECK(Story(intervalRecord("Minutes", 1)).backupsTake(150).lasting(500).play()
          == Lines{"06-01 00:01:00 start 06-01 00:01:00", "06-01 00:02:00 blocked 06-01 00:02:00 running",
                   "06-01 00:03:30 end well", "06-01 00:04:30 start 06-01 00:04:30",
                   "06-01 00:05:30 blocked 06-01 00:05:30 running", "06-01 00:07:00 end well",
                   "06-01 00:08:00 start 06-01 00:08:00"});
}

TEST_CASE("an interval stays due until a backup was started, and there is never more than one to catch up")
{
    CHECK(Story(intervalRecord("Hours", 1)).sleep(at(0, 30), at(5, 30)).lasting(at(6, 30)).play()
          == Lines{"06-01 05:30:00 start 06-01 01:00:00", "06-01 05:30:00 end well",
                   "06-01 06:30:00 start 06-01 06:30:00", "06-01 06:30:00 end well"});
}

TEST_CASE("minutes and hours pass in sleep, too")
{
    CHECK(Story(intervalRecord("Hours", 4)).sleep(at(1, 0), at(3, 0)).lasting(at(4, 0)).play()
          == Lines{"06-01 04:00:00 start 06-01 04:00:00", "06-01 04:00:00 end well"});
}

TEST_CASE("an interval of days keeps the local time of day, whatever the offset")
{
    CHECK(Story(intervalRecord("Days", 1)).in("Europe/Berlin", "2026-03-27T20:00:15Z").lasting(days(3)).play()
          == Lines{"03-28 21:00:15 start 03-28 20:00:15", "03-28 21:00:15 end well",
                   "03-29 21:00:15 start 03-29 19:00:15", "03-29 21:00:15 end well",
                   "03-30 21:00:15 start 03-30 19:00:15", "03-30 21:00:15 end well"});
    CHECK(Story(intervalRecord("Weeks", 1)).in("Europe/Berlin", "2026-03-27T20:00:00Z").lasting(days(8)).play()
          == Lines{"04-03 21:00:00 start 04-03 19:00:00", "04-03 21:00:00 end well"});
}

TEST_CASE("a start later on the day of its moment keeps the time of day that the moment was made from")
{
    CHECK(Story(intervalRecord("Days", 1))
              .in("UTC", "2026-06-01T09:00:00Z")
              .sleep(at(23, 0), at(27, 30))
              .lasting(days(2))
              .play()
          == Lines{"06-02 12:30:00 start 06-02 09:00:00", "06-02 12:30:00 end well",
                   "06-03 09:00:00 start 06-03 09:00:00", "06-03 09:00:00 end well"});
}

TEST_CASE("a start on another day than its moment's makes its own time of day the one to keep")
{
    CHECK(Story(intervalRecord("Days", 1))
              .in("UTC", "2026-06-01T22:00:00Z")
              .sleep(at(23, 0), at(29, 0))
              .lasting(days(3))
              .play()
          == Lines{"06-03 03:00:00 start 06-02 22:00:00", "06-03 03:00:00 end well",
                   "06-04 03:00:00 start 06-04 03:00:00", "06-04 03:00:00 end well"});
}

TEST_CASE("a gap moves the moment of one day and not the time of day that is kept")
{
    CHECK(Story(intervalRecord("Days", 1)).in("Europe/Berlin", "2026-03-28T01:30:00Z").lasting(days(2)).play()
          == Lines{"03-29 03:00:00 start 03-29 01:00:00", "03-29 03:00:00 end well",
                   "03-30 02:30:00 start 03-30 00:30:00", "03-30 02:30:00 end well"});
}

TEST_CASE("a retry on the day of the failed backup leaves the time of day, one on another day sets its own")
{
    CHECK(Story(intervalRecord("Days", 1)).in("UTC", "2026-06-01T09:00:00Z").results({false}).lasting(days(2)).play()
          == Lines{"06-02 09:00:00 start 06-02 09:00:00", "06-02 09:00:00 end badly",
                   "06-02 09:05:00 start 06-02 09:05:00", "06-02 09:05:00 end well",
                   "06-03 09:00:00 start 06-03 09:00:00", "06-03 09:00:00 end well"});
    CHECK(Story(intervalRecord("Days", 2)).in("UTC", "2026-06-01T23:58:00Z").results({false}).lasting(days(5)).play()
          == Lines{"06-03 23:58:00 start 06-03 23:58:00", "06-03 23:58:00 end badly",
                   "06-04 00:03:00 start 06-04 00:03:00", "06-04 00:03:00 end well",
                   "06-06 00:03:00 start 06-06 00:03:00", "06-06 00:03:00 end well"});
}

TEST_CASE("another schedule forgets the time of day that was kept")
{
    CHECK(Story(intervalRecord("Days", 1))
              .in("UTC", "2026-06-01T09:00:00Z")
              .sleep(at(23, 0), at(27, 30))
              .apply(at(28, 0), intervalRecord("Days", 2))
              .lasting(days(4))
              .play()
          == Lines{"06-02 12:30:00 start 06-02 09:00:00", "06-02 12:30:00 end well",
                   "06-04 12:30:00 start 06-04 12:30:00", "06-04 12:30:00 end well"});
}
