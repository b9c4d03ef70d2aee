#include "tests/scheduling/Story.h"

#include <doctest/doctest.h>

using Lines = Story::Lines;

TEST_CASE("events that come in sleep take effect then and are looked at on waking")
{
    CHECK(Story(dailyRecord(9, 0, true))
              .first({{"Battery", true}})
              .sleep(at(8, 0), at(12, 0))
              .set(at(9, 0), "Battery", false)
              .set(at(10, 0), "Battery", true)
              .set(at(11, 0), "Battery", false)
              .play()
          == Lines{"06-01 12:00:00 start 06-01 09:00:00", "06-01 12:00:00 end well"});
    CHECK(Story(dailyRecord(9, 0, true)).sleep(at(8, 0), at(12, 0)).apply(at(10, 0), dailyRecord(11, 0, true)).play()
          == Lines{"06-01 12:00:00 start 06-01 09:00:00", "06-01 12:00:00 end well"});
}

TEST_CASE("a backup that runs when the computer falls asleep ends after waking with the rest of its duration")
{
    CHECK(Story(dailyRecord(9, 0)).backupsTake(600).sleep(at(9, 4), at(12, 0)).play()
          == Lines{"06-01 09:00:00 start 06-01 09:00:00", "06-01 12:06:00 end well"});
    CHECK(Story(dailyRecord(9, 0)).backupsTake(600).sleep(at(9, 10), at(12, 0)).play()
          == Lines{"06-01 09:00:00 start 06-01 09:00:00", "06-01 12:00:00 end well"});
}

TEST_CASE("a clock that is put forward is as sleep")
{
    CHECK(Story(dailyRecord(9, 0)).setClockBy(at(8, 0), at(3, 0)).lasting(at(10, 0)).play()
          == Lines{"06-01 11:00:00 missed 06-01 09:00:00 asleep"});
    CHECK(Story(dailyRecord(9, 0, true)).setClockBy(at(8, 0), at(3, 0)).lasting(at(10, 0)).play()
          == Lines{"06-01 11:00:00 start 06-01 09:00:00", "06-01 11:00:00 end well"});
    CHECK(Story(dailyRecord(9, 0)).setClockBy(at(8, 0), at(1, 10)).lasting(at(10, 0)).play()
          == Lines{"06-01 09:10:00 start 06-01 09:00:00", "06-01 09:10:00 end well"});
}

TEST_CASE("a clock that is put back by at most 3,600 seconds brings nothing again")
{
    CHECK(Story(dailyRecord(9, 0)).setClockBy(at(9, 30), -3'600).lasting(at(12, 0)).play().size() == 2);
    CHECK(Story(dailyRecord(9, 0))
              .first({{"Battery", true}})
              .setClockBy(at(9, 30), -3'600)
              .lasting(at(12, 0))
              .play()
              .size()
          == 2);
    CHECK(Story(dailyRecord(9, 0)).setClockBy(at(9, 30), -3'601).lasting(at(12, 0)).play()
          == Lines{"06-01 09:00:00 start 06-01 09:00:00", "06-01 09:00:00 end well",
                   "06-01 09:00:00 start 06-01 09:00:00", "06-01 09:00:00 end well"});
}

TEST_CASE("a due moment that comes to lie in the future is not due until then")
{
    CHECK(Story(dailyRecord(9, 0))
              .first({{"Battery", true}})
              .setClockBy(at(9, 5), -600)
              .set(at(9, 6), "Battery", false)
              .lasting(at(9, 20))
              .play()
          == Lines{"06-01 09:00:00 blocked 06-01 09:00:00 battery", "06-01 09:00:00 start 06-01 09:00:00",
                   "06-01 09:00:00 end well"});
}

TEST_CASE("a clock put back within the time of a moment lets it come again, with the reasons of then")
{
    CHECK(Story(calendarRecord({entry(8, 0), entry(9, 0)}))
              .backupsTake(at(3, 0))
              .results({false})
              .set(at(9, 5), "Battery", true)
              .setClockBy(at(9, 20), -1'800)
              .set(at(9, 25), "Battery", false)
              .lasting(at(11, 0))
              .play()
              .back()
          == "06-01 10:30:00 missed 06-01 09:00:00 running");
}

TEST_CASE("put back by more than 3,600 seconds, what lies in the future becomes now")
{
    // The interval counts from the new now.
    CHECK(Story(intervalRecord("Hours", 5)).setClockBy(at(6, 0), -at(4, 0)).lasting(at(12, 0)).play()
          == Lines{"06-01 05:00:00 start 06-01 05:00:00", "06-01 05:00:00 end well",
                   "06-01 07:00:00 start 06-01 07:00:00", "06-01 07:00:00 end well"});
    // By less it waits for what it was.
    CHECK(Story(intervalRecord("Hours", 5)).setClockBy(at(6, 0), -at(1, 0)).lasting(at(11, 0)).play()
          == Lines{"06-01 05:00:00 start 06-01 05:00:00", "06-01 05:00:00 end well",
                   "06-01 10:00:00 start 06-01 10:00:00", "06-01 10:00:00 end well"});
}
