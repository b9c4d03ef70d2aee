#include "scheduling/InstantText.h"
#include "scheduling/Scheduler.h"
#include "scheduling/Upcoming.h"
#include "tests/scheduling/Story.h"

#include <doctest/doctest.h>

using namespace scheduling;

namespace {

std::vector<std::string> upcoming(const ScheduleSettings& record, const char* zone, const char* from, std::size_t count)
{
    Conditions conditions;
    conditions.unusedSince = 0;
    const Now now{instantOf(from), 0};
    const Scheduler scheduler(record, *platform::TimeZone::named(zone), conditions, now);
    std::vector<std::string> texts;
    for (const Upcoming& moment : upcomingMoments(scheduler, now, count)) {
        auto text = localTextOfInstant(scheduler.plan().local, moment.at);
        text += moment.suspended ? " suspended" : "";
        text += moment.shifted ? " shifted" : "";
        text += moment.repeated ? " repeated" : "";
        texts.push_back(text);
    }
    return texts;
}

using Texts = std::vector<std::string>;

} // namespace

TEST_CASE("the next moments of a calendar are marked where a gap moves them and where their time comes twice")
{
    CHECK(upcoming(dailyRecord(2, 30), "Europe/Berlin", "2026-03-28T12:00:00Z", 2)
          == Texts{"2026-03-29T03:00:00+02:00 shifted", "2026-03-30T02:30:00+02:00"});
    CHECK(upcoming(dailyRecord(2, 30), "Europe/Berlin", "2026-10-24T12:00:00Z", 2)
          == Texts{"2026-10-25T02:30:00+02:00 repeated", "2026-10-26T02:30:00+01:00"});
    CHECK(upcoming(suspendedBetween(calendarRecord({entry(3, 0), entry(12, 0)}), 22, 0, 6, 0), "UTC",
                   "2026-06-01T00:00:00Z", 2)
          == Texts{"2026-06-01T03:00:00+00:00 suspended", "2026-06-01T12:00:00+00:00"});
    CHECK(upcoming(dailyRecord(9, 0), "UTC", "2026-06-01T09:00:00Z", 1) == Texts{"2026-06-02T09:00:00+00:00"});
}

TEST_CASE("the next moments of an interval are as if each backup started in its moment")
{
    CHECK(upcoming(intervalRecord("Hours", 6), "UTC", "2026-06-01T00:00:00Z", 3)
          == Texts{"2026-06-01T06:00:00+00:00", "2026-06-01T12:00:00+00:00", "2026-06-01T18:00:00+00:00"});
    CHECK(upcoming(intervalRecord("Days", 1), "Europe/Berlin", "2026-03-28T01:30:00Z", 2)
          == Texts{"2026-03-29T03:00:00+02:00 shifted", "2026-03-30T02:30:00+02:00"});
}

TEST_CASE("when inactive one moment is known at most, and none while the record is off")
{
    CHECK(upcoming(inactiveRecord(), "UTC", "2026-06-01T00:00:00Z", 20) == Texts{"2026-06-01T00:05:00+00:00"});
    CHECK(upcoming(with(dailyRecord(9, 0), "Disabled", true), "UTC", "2026-06-01T00:00:00Z", 20).empty());
    CHECK(upcoming(calendarRecord({}), "UTC", "2026-06-01T00:00:00Z", 20).empty());
    CHECK(upcoming(dailyRecord(9, 0), "UTC", "2026-06-01T00:00:00Z", 20).size() == 20);
    CHECK(upcoming(dailyRecord(9, 0), "UTC", "2026-06-01T00:00:00Z", 0).empty());
}
