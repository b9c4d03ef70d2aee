#include "tests/scheduling/Story.h"

#include <doctest/doctest.h>

using platform::Dictionary;
using Lines = Story::Lines;

TEST_CASE("a change of the schedule settles what came before it")
{
    const auto record = dailyRecord(9, 0);
    CHECK(Story(record)
              .first({{"Battery", true}})
              .apply(at(9, 5), calendarRecord({entry(9, 0), entry(9, 3)}))
              .set(at(9, 6), "Battery", false)
              .play()
          == Lines{"06-01 09:00:00 blocked 06-01 09:00:00 battery"});
}

TEST_CASE("a record that differs in what the present mode does not read is no other schedule")
{
    const auto record = dailyRecord(9, 0);
    const Lines started{"06-01 09:00:00 blocked 06-01 09:00:00 battery", "06-01 09:06:00 start 06-01 09:00:00",
                        "06-01 09:06:00 end well"};
    const auto played = [&](const ScheduleSettings& after) {
        return Story(record).first({{"Battery", true}}).apply(at(9, 5), after).set(at(9, 6), "Battery", false).play();
    };
    CHECK(played(record) == started);
    CHECK(played(with(record, "Disabled", false)) == started);
    CHECK(played(with(record, "Backups", 1)) == started);
    CHECK(played(with(record, "Interval", Dictionary{{"Minutes", 1}})) == started);
    CHECK(played(with(record, "WhenInactive", Dictionary{{"A", 1}})) == started);
    CHECK(played(with(record, "DontRunWhenPassive", true)) == started);
    const Dictionary sameByValue{{"ASAP", 0}, {"Intervals", platform::Array{Dictionary{{"Minute", 0.0}, {"Hour", 9}}}}};
    CHECK(played(with(record, "CalendarIntervals", sameByValue)).size()
          == 1); // a real is no minute, but it is no change
    CHECK(
        played(with(record, "CalendarIntervals", Dictionary{{"ASAP", 0}, {"Intervals", platform::Array{entry(9, 0)}}}))
        == started);
    CHECK(played(with(record, "Disabled", true)).size() == 1);
}

TEST_CASE("when inactive, the empty sub-record and an absent one are the same, another one is another schedule")
{
    const auto starts = [](const ScheduleSettings& after) {
        return Story(inactiveRecord()).results({false}).apply(at(0, 7), after).lasting(at(0, 10)).play().size() == 4;
    };
    CHECK(starts(with(inactiveRecord(), "WhenInactive", Dictionary())));
    CHECK(starts(with(inactiveRecord(), "WhenInactive", "text")));
    CHECK(starts(with(inactiveRecord(), "BackupsMode", "Other")));
    CHECK_FALSE(starts(with(inactiveRecord(), "WhenInactive", Dictionary{{"A", 1}})));
}

TEST_CASE("a backup that was due is owed by a calendar with ASAP that comes into force")
{
    CHECK(Story(intervalRecord("Hours", 1))
              .first({{"Battery", true}})
              .apply(at(2, 0), dailyRecord(9, 0, true))
              .set(at(3, 0), "Battery", false)
              .lasting(at(4, 0))
              .play()
          == Lines{"06-01 01:00:00 blocked 06-01 01:00:00 battery", "06-01 03:00:00 start 06-01 01:00:00",
                   "06-01 03:00:00 end well"});
    CHECK(Story(dailyRecord(1, 0, true))
              .first({{"Battery", true}})
              .apply(at(2, 0), dailyRecord(9, 0, true))
              .set(at(3, 0), "Battery", false)
              .lasting(at(4, 0))
              .play()
              .size()
          == 3);
}

TEST_CASE("nothing is owed to a schedule that is off, or no calendar with ASAP")
{
    const auto last = [](const ScheduleSettings& between) {
        return Story(dailyRecord(1, 0, true))
            .first({{"Battery", true}})
            .apply(at(2, 0), between)
            .apply(at(2, 1), dailyRecord(9, 0, true))
            .set(at(3, 0), "Battery", false)
            .lasting(at(4, 0))
            .play()
            .back();
    };
    const std::string nothing = "06-01 01:00:00 blocked 06-01 01:00:00 battery";
    CHECK(last(dailyRecord(9, 0)) == nothing);
    CHECK(last(with(dailyRecord(1, 0, true), "Disabled", true)) == nothing);
    CHECK(last(with(dailyRecord(1, 0, true), "Backups", false)) == nothing);
    CHECK(last(intervalRecord("Hours", 9)) == nothing);
    CHECK(last(dailyRecord(8, 0, true)) == "06-01 03:00:00 end well");
}

TEST_CASE("a backup that waited for its retry is owed, as of the end of the one that failed")
{
    CHECK(Story(dailyRecord(1, 0, true))
              .results({false})
              .apply(at(1, 2), dailyRecord(9, 0, true))
              .lasting(at(2, 0))
              .play()
          == Lines{"06-01 01:00:00 start 06-01 01:00:00", "06-01 01:00:00 end badly",
                   "06-01 01:02:00 start 06-01 01:00:00", "06-01 01:02:00 end well"});
}

TEST_CASE("a backup that was due stays owed in another zone")
{
    CHECK(Story(dailyRecord(9, 0, true))
              .first({{"Battery", true}})
              .travel(at(10, 0), "America/New_York")
              .set(at(11, 0), "Battery", false)
              .lasting(at(12, 0))
              .play()
          == Lines{"06-01 09:00:00 blocked 06-01 09:00:00 battery", "06-01 07:00:00 start 06-01 09:00:00",
                   "06-01 07:00:00 end well"});
}

TEST_CASE("travelling west, 09:00 can come twice within a day")
{
    CHECK(Story(dailyRecord(9, 0)).travel(at(10, 0), "America/New_York").play()
          == Lines{"06-01 09:00:00 start 06-01 09:00:00", "06-01 09:00:00 end well",
                   "06-01 09:00:00 start 06-01 13:00:00", "06-01 09:00:00 end well"});
}

TEST_CASE("travelling east, moments that now lie more than 600 seconds back are settled untold")
{
    CHECK(Story(dailyRecord(9, 0)).travel(at(7, 10, 1), "Europe/Berlin").lasting(at(12, 0)).play().empty());
    CHECK(Story(dailyRecord(9, 0)).travel(at(7, 10), "Europe/Berlin").lasting(at(12, 0)).play()
          == Lines{"06-01 09:10:00 start 06-01 07:00:00", "06-01 09:10:00 end well"});
    CHECK(Story(dailyRecord(9, 0, true)).travel(at(8, 0), "Europe/Berlin").lasting(at(12, 0)).play()
          == Lines{"06-01 10:00:00 start 06-01 07:00:00", "06-01 10:00:00 end well"});
}

TEST_CASE("a change to a zone of the same name is none")
{
    CHECK(Story(dailyRecord(1, 0, true)).results({false}).travel(at(1, 2), "UTC").lasting(at(1, 3)).play().size() == 2);
    CHECK(Story(dailyRecord(1, 0, true)).results({false}).travel(at(1, 2), "Etc/UTC").lasting(at(1, 3)).play().size()
          == 4);
}
