#include "scheduling/Scheduler.h"
#include "tests/scheduling/Story.h"

#include <doctest/doctest.h>

using platform::Dictionary;
using Lines = Story::Lines;
using namespace scheduling;

namespace {

// Whether the 09:00 of a story starts.
bool startsAt9(const Story& story)
{
    const auto lines = story.play();
    return !lines.empty() && lines.front() == "06-01 09:00:00 start 06-01 09:00:00";
}

Scheduler schedulerOf(const ScheduleSettings& record, const Conditions& conditions = {})
{
    return {record, *platform::TimeZone::named("UTC"), conditions, {instantOf("2026-06-01T00:00:00Z"), 0}};
}

Now nowAt(std::int64_t seconds)
{
    return {instantOf("2026-06-01T00:00:00Z") + seconds, seconds};
}

} // namespace

TEST_CASE("the suspension holds from its start until before its end")
{
    const auto record = dailyRecord(9, 0);
    CHECK_FALSE(startsAt9(Story(suspendedBetween(record, 9, 0, 10, 0))));
    CHECK_FALSE(startsAt9(Story(suspendedBetween(record, 8, 59, 9, 1))));
    CHECK(startsAt9(Story(suspendedBetween(record, 8, 0, 9, 0))));
    CHECK(startsAt9(Story(suspendedBetween(record, 9, 1, 8, 59))));
    CHECK(startsAt9(Story(with(suspendedBetween(record, 9, 0, 10, 0), "Suspend", false))));
}

TEST_CASE("a suspension whose end is before its start crosses midnight")
{
    CHECK_FALSE(startsAt9(Story(suspendedBetween(dailyRecord(9, 0), 22, 0, 9, 1))));
    CHECK_FALSE(startsAt9(Story(suspendedBetween(dailyRecord(9, 0), 9, 0, 6, 0))));
}

TEST_CASE("equal times, and values out of range, suspend nothing, and a missing value is 0")
{
    CHECK(startsAt9(Story(suspendedBetween(dailyRecord(9, 0), 9, 0, 9, 0))));
    CHECK(startsAt9(Story(suspendedBetween(dailyRecord(9, 0), 24, 0, 10, 0))));
    CHECK(startsAt9(Story(suspendedBetween(dailyRecord(9, 0), 8, 60, 10, 0))));
    CHECK(startsAt9(Story(suspendedBetween(dailyRecord(9, 0), -1, 0, 10, 0))));
    CHECK(startsAt9(Story(with(dailyRecord(9, 0), "Suspend", true))));
    auto record = with(dailyRecord(9, 0), "Suspend", true);
    CHECK_FALSE(startsAt9(Story(with(record, "SuspendSettings", Dictionary{{"EndHour", 10}}))));
    CHECK_FALSE(startsAt9(Story(with(record, "SuspendSettings", Dictionary{{"StartHour", 9}}))));
}

TEST_CASE("a backup that waits starts when the suspension ends")
{
    CHECK(Story(suspendedBetween(dailyRecord(23, 0, true), 22, 0, 6, 0)).lasting(days(2)).play()
          == Lines{"06-01 23:00:00 blocked 06-01 23:00:00 suspended", "06-02 06:00:00 start 06-01 23:00:00",
                   "06-02 06:00:00 end well", "06-02 23:00:00 blocked 06-02 23:00:00 suspended"});
}

TEST_CASE("battery power stands in the way of machines that have one, unless it is allowed")
{
    const auto record = dailyRecord(9, 0);
    CHECK_FALSE(startsAt9(Story(record).first({{"Battery", true}})));
    CHECK(startsAt9(Story(record).first({{"Battery", true}, {"HasBattery", false}})));
    CHECK(startsAt9(Story(with(record, "AllowBattery", true)).first({{"Battery", true}})));
}

TEST_CASE("the advanced conditions stand in the way only where the record says so")
{
    const auto record = dailyRecord(9, 0);
    const Dictionary all{{"Passive", true}, {"SleepPreventers", true}, {"Wired", false}};
    CHECK(startsAt9(Story(record).first(all)));
    CHECK(Story(with(record, "DontRunWhenPassive", true))
              .first(all)
              .play()
              .front()
              .ends_with("blocked 06-01 09:00:00 passive"));
    CHECK(Story(with(record, "DontRunWithSleepPreventers", true))
              .first(all)
              .play()
              .front()
              .ends_with(" sleepPreventers"));
    CHECK(Story(with(record, "DontRunWhenNotNetworkWired", true)).first(all).play().front().ends_with(" notWired"));
}

TEST_CASE("all reasons are told in their order")
{
    ScheduleSettings record = suspendedBetween(dailyRecord(9, 0), 8, 0, 10, 0);
    for (const char* key : {"DontRunWhenPassive", "DontRunWithSleepPreventers", "DontRunWhenNotNetworkWired"})
        record.set(key, true);
    Conditions all;
    all.battery = all.passive = all.sleepPreventers = all.otherBackup = all.maintenance = all.noProgram = true;
    all.wired = false;
    Scheduler scheduler = schedulerOf(record, all);
    const Look look = scheduler.look(nowAt(at(9, 0)));
    CHECK(look.reasons.names()
          == std::vector<std::string_view>{"suspended", "battery", "passive", "sleepPreventers", "notWired", "running",
                                           "maintenance", "noProgram"});
    CHECK(look.blockedAnew);
    CHECK_FALSE(look.shouldStart());
}

TEST_CASE("a blocked backup is told when its reasons change, and not for another moment alone")
{
    CHECK(Story(calendarRecord({entry(9, 0), entry(9, 5)}))
              .first({{"Battery", true}})
              .set(at(9, 2), "Passive", true)
              .lasting(at(9, 12))
              .play()
          == Lines{"06-01 09:00:00 blocked 06-01 09:00:00 battery", "06-01 09:10:01 missed 06-01 09:00:00 battery"});
    const auto record = with(dailyRecord(9, 0, true), "DontRunWhenPassive", true);
    CHECK(Story(record)
              .first({{"Battery", true}})
              .set(at(9, 2), "Passive", true)
              .set(at(9, 3), "Battery", false)
              .set(at(9, 4), "Passive", false)
              .play()
          == Lines{"06-01 09:00:00 blocked 06-01 09:00:00 battery",
                   "06-01 09:02:00 blocked 06-01 09:00:00 battery passive",
                   "06-01 09:03:00 blocked 06-01 09:00:00 passive", "06-01 09:04:00 start 06-01 09:00:00",
                   "06-01 09:04:00 end well"});
}

TEST_CASE("nothing due between two looks makes the same reasons news")
{
    CHECK(Story(calendarRecord({entry(9, 0), entry(10, 0)})).first({{"Battery", true}}).lasting(at(10, 1)).play()
          == Lines{"06-01 09:00:00 blocked 06-01 09:00:00 battery", "06-01 09:10:01 missed 06-01 09:00:00 battery",
                   "06-01 10:00:00 blocked 06-01 10:00:00 battery"});
}

TEST_CASE("a running backup is not ended because a condition changed")
{
    CHECK(Story(dailyRecord(9, 0)).backupsTake(600).set(at(9, 1), "Battery", true).play()
          == Lines{"06-01 09:00:00 start 06-01 09:00:00", "06-01 09:10:00 end well"});
}

TEST_CASE("while the record is off nothing is due, no retry either, and a running backup runs on")
{
    CHECK(Story(with(dailyRecord(9, 0), "Backups", false)).play().empty());
    CHECK(Story(with(dailyRecord(9, 0), "Disabled", true)).play().empty());
    CHECK(Story(dailyRecord(9, 0))
              .backupsTake(600)
              .results({false})
              .apply(at(9, 5), with(dailyRecord(9, 0), "Disabled", true))
              .play()
          == Lines{"06-01 09:00:00 start 06-01 09:00:00", "06-01 09:10:00 end badly"});
}

TEST_CASE("an empty record, and an unknown mode, are off and when inactive")
{
    CHECK(Story(ScheduleSettings()).play().empty());
    CHECK(Story(with(inactiveRecord(), "BackupsMode", "Other")).lasting(300).play().size() == 2);
    CHECK(Story(ScheduleSettings{{"Backups", true}}).lasting(300).play().size() == 2);
}

TEST_CASE("a start by hand is a start like any other, but leaves the time of day")
{
    Scheduler scheduler = schedulerOf(intervalRecord("Days", 1));
    scheduler.started(Scheduler::Start::ByHand, nowAt(at(15, 0)));
    CHECK(scheduler.memory().runs());
    scheduler.ended(true, nowAt(at(15, 10)));
    CHECK_FALSE(scheduler.memory().timeOfDay);
    CHECK(scheduler.memory().settled == nowAt(at(15, 10)).clock);
    CHECK(scheduler.memory().lastSucceeded == nowAt(at(15, 10)).clock);
    CHECK(scheduler.status(nowAt(at(16, 0))).due == nowAt(days(1) + at(15, 0)).clock);
}

TEST_CASE("the status says how things stand")
{
    Scheduler scheduler = schedulerOf(dailyRecord(9, 0));
    CHECK(scheduler.status(nowAt(0)).state == State::Waiting);
    CHECK(scheduler.status(nowAt(0)).due == nowAt(at(9, 0)).clock);
    scheduler.setConditions({.battery = true}, nowAt(10));
    CHECK(scheduler.status(nowAt(20)).reasons.empty());
    CHECK(scheduler.status(nowAt(at(9, 5))).state == State::Blocked);
    CHECK(scheduler.status(nowAt(at(9, 5))).reasons == Reasons{Reason::Battery});
    scheduler.started(Scheduler::Start::ByHand, nowAt(at(9, 6)));
    CHECK(scheduler.status(nowAt(at(9, 7))).state == State::Running);
    scheduler.ended(true, nowAt(at(9, 8)));
    scheduler.apply(with(dailyRecord(9, 0), "Disabled", true), nowAt(at(9, 9)));
    CHECK(scheduler.status(nowAt(at(9, 10))).state == State::Off);
    CHECK_FALSE(scheduler.status(nowAt(at(9, 10))).due);
    CHECK(std::string(stateName(State::Off)) == "off");
    CHECK(std::string(stateName(State::Waiting)) == "waiting");
    CHECK(std::string(stateName(State::Blocked)) == "blocked");
    CHECK(std::string(stateName(State::Running)) == "running");
}

TEST_CASE("entries that the suspension makes miss each time are found")
{
    const auto misses = [](const ScheduleSettings& record) { return schedulerOf(record).missesEntriesInSuspension(); };
    CHECK(misses(suspendedBetween(dailyRecord(9, 0), 8, 0, 10, 0)));
    CHECK(misses(suspendedBetween(calendarRecord({entry(3, 0), entry(12, 0)}), 22, 0, 6, 0)));
    CHECK_FALSE(misses(suspendedBetween(dailyRecord(9, 0, true), 8, 0, 10, 0)));
    CHECK_FALSE(misses(suspendedBetween(dailyRecord(9, 0), 8, 0, 9, 10)));
    CHECK(misses(suspendedBetween(dailyRecord(9, 0), 8, 0, 9, 11)));
    CHECK_FALSE(misses(suspendedBetween(dailyRecord(9, 0), 9, 5, 9, 2)));
    CHECK_FALSE(misses(dailyRecord(9, 0)));
}
