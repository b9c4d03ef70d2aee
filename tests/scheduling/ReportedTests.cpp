// What people report of other timers, none of which happens here.

#include "tests/scheduling/Story.h"

#include <algorithm>
#include <doctest/doctest.h>

using Lines = Story::Lines;

namespace {

Lines startsOf(const Story& story)
{
    Lines starts = story.play();
    std::erase_if(starts, [](const std::string& line) { return line.find(" start ") == std::string::npos; });
    return starts;
}

} // namespace

TEST_CASE("a daily 02:30 is not skipped on the night on which 02:30 does not exist")
{
    CHECK(startsOf(Story(dailyRecord(2, 30)).in("Europe/Berlin", "2026-03-28T00:00:00Z").lasting(days(3)))
          == Lines{"03-28 02:30:00 start 03-28 01:30:00", "03-29 03:00:00 start 03-29 01:00:00",
                   "03-30 02:30:00 start 03-30 00:30:00"});
}

TEST_CASE("a four-hourly rhythm loses no hours after a gap")
{
    CHECK(startsOf(Story(intervalRecord("Hours", 4)).in("America/New_York", "2026-03-08T04:00:00Z").lasting(at(16, 0)))
          == Lines{"03-08 04:00:00 start 03-08 08:00:00", "03-08 08:00:00 start 03-08 12:00:00",
                   "03-08 12:00:00 start 03-08 16:00:00", "03-08 16:00:00 start 03-08 20:00:00"});
    const platform::Array everyFourHours{entry(2, 0),  entry(6, 0),  entry(10, 0),
                                         entry(14, 0), entry(18, 0), entry(22, 0)};
    CHECK(startsOf(
              Story(calendarRecord(everyFourHours)).in("America/New_York", "2026-03-08T05:00:00Z").lasting(at(10, 0)))
          == Lines{"03-08 03:00:00 start 03-08 07:00:00", "03-08 06:00:00 start 03-08 10:00:00",
                   "03-08 10:00:00 start 03-08 14:00:00"});
}

TEST_CASE("an every-minute rhythm is not silent for the hour that is repeated")
{
    const auto starts =
        startsOf(Story(intervalRecord("Minutes", 1)).in("Europe/Berlin", "2026-10-25T00:00:00Z").lasting(at(3, 0)));
    CHECK(starts.size() == 180);
}

TEST_CASE("a schedule that is changed does not start a moment that it recomputes into the past")
{
    CHECK(startsOf(Story(dailyRecord(20, 0)).apply(at(10, 0), dailyRecord(9, 0)).lasting(days(2)))
          == Lines{"06-02 09:00:00 start 06-02 09:00:00"});
    CHECK(startsOf(Story(dailyRecord(20, 0, true)).apply(at(10, 0), dailyRecord(9, 0, true)).lasting(days(2)))
          == Lines{"06-02 09:00:00 start 06-02 09:00:00"});
}

TEST_CASE("a clock that was years ahead and is set right does not make backups wait for years")
{
    const std::int64_t years = days(3'650);
    CHECK(startsOf(Story(dailyRecord(9, 0)).setClockBy(at(1, 0), years).setClockBy(at(12, 0), -years).lasting(days(2)))
              .back()
          == "06-02 09:00:00 start 06-02 09:00:00");
    CHECK(startsOf(Story(intervalRecord("Hours", 1))
                       .setClockBy(at(0, 30), years)
                       .setClockBy(at(2, 0), -years)
                       .lasting(at(3, 0)))
              .back()
          == "06-01 03:00:00 start 06-01 03:00:00");
    CHECK(startsOf(Story(inactiveRecord()).setClockBy(at(0, 1), years).setClockBy(at(0, 30), -years).lasting(at(1, 30)))
              .back()
          == "06-01 01:30:00 start 06-01 01:30:00");
}

TEST_CASE("no schedule is lost over sleep")
{
    const auto asleepAtNight = [](Story story) {
        for (int day = 0; day < 5; ++day)
            story.sleep(days(day) + at(1, 0), days(day) + at(8, 0));
        return startsOf(story.lasting(days(5)));
    };
    CHECK(asleepAtNight(Story(dailyRecord(3, 0, true))).size() == 5);
    CHECK(asleepAtNight(Story(intervalRecord("Hours", 12))).size() == 10);
    CHECK(asleepAtNight(Story(dailyRecord(9, 0))).size() == 5);
}

TEST_CASE("no backup is missed without a word over sleep")
{
    CHECK(Story(dailyRecord(3, 0)).sleep(at(1, 0), days(3) + at(8, 0)).lasting(days(4)).play()
          == Lines{"06-04 08:00:00 missed 06-01 03:00:00 asleep", "06-04 08:00:00 missed 06-02 03:00:00 asleep",
                   "06-04 08:00:00 missed 06-03 03:00:00 asleep", "06-04 08:00:00 missed 06-04 03:00:00 asleep"});
}

TEST_CASE("a backup that is due at waking starts at once, and not twice")
{
    CHECK(startsOf(Story(intervalRecord("Minutes", 30)).sleep(at(1, 10), at(1, 40)).lasting(at(2, 10)))
          == Lines{"06-01 00:30:00 start 06-01 00:30:00", "06-01 01:00:00 start 06-01 01:00:00",
                   "06-01 01:40:00 start 06-01 01:30:00", "06-01 02:10:00 start 06-01 02:10:00"});
}
