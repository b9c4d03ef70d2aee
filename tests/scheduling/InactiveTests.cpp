#include "tests/scheduling/Story.h"

#include <doctest/doctest.h>

using Lines = Story::Lines;

TEST_CASE("when inactive, a backup is due when nobody has used the computer for 300 seconds")
{
    CHECK(Story(inactiveRecord()).lasting(at(1, 0)).play()
          == Lines{"06-01 00:05:00 start 06-01 00:05:00", "06-01 00:05:00 end well"});
    CHECK(Story(inactiveRecord()).first({{"InUse", true}}).lasting(at(1, 0)).play().empty());
    CHECK(Story(inactiveRecord()).first({{"InUse", true}}).set(at(0, 20), "InUse", false).lasting(at(1, 0)).play()
          == Lines{"06-01 00:25:00 start 06-01 00:25:00", "06-01 00:25:00 end well"});
}

TEST_CASE("being used for a moment begins the 300 seconds again")
{
    CHECK(Story(inactiveRecord()).set(299, "InUse", true).set(299, "InUse", false).lasting(at(0, 10)).play()
          == Lines{"06-01 00:09:59 start 06-01 00:09:59", "06-01 00:09:59 end well"});
    CHECK(Story(inactiveRecord()).set(299, "InUse", false).lasting(at(0, 5)).play()
          == Lines{"06-01 00:05:00 start 06-01 00:05:00", "06-01 00:05:00 end well"});
}

TEST_CASE("when inactive, an hour passes after the end of a backup")
{
    CHECK(Story(inactiveRecord()).backupsTake(600).lasting(at(1, 15)).play()
          == Lines{"06-01 00:05:00 start 06-01 00:05:00", "06-01 00:15:00 end well",
                   "06-01 01:15:00 start 06-01 01:15:00"});
    CHECK(Story(inactiveRecord()).lastStart("2026-05-31T23:30:00Z").lasting(at(0, 30)).play()
          == Lines{"06-01 00:30:00 start 06-01 00:30:00", "06-01 00:30:00 end well"});
}

TEST_CASE("the time without use is true time: the clock does not alter it, sleep belongs to it")
{
    CHECK(Story(inactiveRecord()).setClockBy(100, 7'200).lasting(300).play()
          == Lines{"06-01 02:05:00 start 06-01 02:05:00", "06-01 02:05:00 end well"});
    CHECK(Story(inactiveRecord()).setClockBy(100, -7'200).lasting(300).play()
          == Lines{"05-31 22:05:00 start 05-31 22:05:00", "05-31 22:05:00 end well"});
    CHECK(Story(inactiveRecord()).sleep(10, 1'000).lasting(1'000).play()
          == Lines{"06-01 00:16:40 start 06-01 00:05:00", "06-01 00:16:40 end well"});
}

TEST_CASE("the moment without use is told as now less what the length exceeds 300 seconds")
{
    CHECK(Story(inactiveRecord())
              .first({{"Battery", true}})
              .setClockBy(400, 1'000)
              .set(500, "Battery", false)
              .lasting(500)
              .play()
          == Lines{"06-01 00:05:00 blocked 06-01 00:05:00 battery", "06-01 00:25:00 start 06-01 00:21:40",
                   "06-01 00:25:00 end well"});
}

TEST_CASE("a failed backup is due again after 300, 900, 2,700 and from the fourth on 21,600 seconds")
{
    const auto starts = Story(dailyRecord(0, 1)).results({false, false, false, false, false}).lasting(at(13, 7)).play();
    CHECK(starts
          == Lines{
              "06-01 00:01:00 start 06-01 00:01:00", "06-01 00:01:00 end badly", "06-01 00:06:00 start 06-01 00:06:00",
              "06-01 00:06:00 end badly", "06-01 00:21:00 start 06-01 00:21:00", "06-01 00:21:00 end badly",
              "06-01 01:06:00 start 06-01 01:06:00", "06-01 01:06:00 end badly", "06-01 07:06:00 start 06-01 07:06:00",
              "06-01 07:06:00 end badly", "06-01 13:06:00 start 06-01 13:06:00", "06-01 13:06:00 end well"});
}

TEST_CASE("a success and another schedule end the retries")
{
    CHECK(Story(dailyRecord(0, 1)).results({false, true}).lasting(at(20, 0)).play().size() == 4);
    CHECK(Story(dailyRecord(0, 1)).results({false}).apply(at(0, 3), dailyRecord(0, 2)).lasting(at(20, 0)).play().size()
          == 2);
    CHECK(Story(dailyRecord(0, 1))
              .results({false})
              .apply(at(0, 3), with(dailyRecord(0, 1), "AllowBattery", true))
              .lasting(at(0, 6))
              .play()
              .back()
          == "06-01 00:06:00 end well");
}

TEST_CASE("a retry is never missed, and waits for what stands in its way")
{
    CHECK(
        Story(dailyRecord(0, 1)).results({false}).set(at(0, 2), "Battery", true).set(at(9, 0), "Battery", false).play()
        == Lines{"06-01 00:01:00 start 06-01 00:01:00", "06-01 00:01:00 end badly",
                 "06-01 00:06:00 blocked 06-01 00:06:00 battery", "06-01 09:00:00 start 06-01 00:06:00",
                 "06-01 09:00:00 end well"});
}

TEST_CASE("a retry and a moment stand side by side: the earlier is told, and one start serves both")
{
    CHECK(Story(calendarRecord({entry(0, 1), entry(0, 8)}))
              .results({false})
              .set(at(0, 2), "Battery", true)
              .set(at(0, 9), "Battery", false)
              .play()
          == Lines{"06-01 00:01:00 start 06-01 00:01:00", "06-01 00:01:00 end badly",
                   "06-01 00:06:00 blocked 06-01 00:06:00 battery", "06-01 00:09:00 start 06-01 00:06:00",
                   "06-01 00:09:00 end well"});
    CHECK(Story(calendarRecord({entry(0, 1), entry(0, 4)})).results({false}).play()
          == Lines{"06-01 00:01:00 start 06-01 00:01:00", "06-01 00:01:00 end badly",
                   "06-01 00:04:00 start 06-01 00:04:00", "06-01 00:04:00 end well"});
}

TEST_CASE("when inactive, a retry waits until nobody has used the computer for 300 seconds")
{
    CHECK(Story(inactiveRecord())
              .results({false})
              .set(at(0, 6), "InUse", true)
              .set(at(0, 30), "InUse", false)
              .lasting(at(1, 0))
              .play()
          == Lines{"06-01 00:05:00 start 06-01 00:05:00", "06-01 00:05:00 end badly",
                   "06-01 00:35:00 start 06-01 00:35:00", "06-01 00:35:00 end well"});
}

TEST_CASE("while a backup runs no retry is due")
{
    CHECK(Story(dailyRecord(0, 1)).results({false, false}).backupsTake(at(1, 0)).lasting(at(2, 20)).play()
          == Lines{"06-01 00:01:00 start 06-01 00:01:00", "06-01 01:01:00 end badly",
                   "06-01 01:06:00 start 06-01 01:06:00", "06-01 02:06:00 end badly"});
}
