#include "tests/enforcement/EnforcedMachine.h"
#include "tests/platform/ScriptedBackups.h"
#include "tests/platform/ScriptedClock.h"

#include <doctest/doctest.h>

using std::chrono::hours;
using std::chrono::minutes;
using std::chrono::seconds;
using Texts = std::vector<std::string>;

TEST_CASE("a helper that begins again finds the backup that runs, and hears of its end")
{
    const auto settings = EnforcedMachine::everyMinutes(60);
    EnforcedMachine machine(settings);
    machine.advance(minutes(60));
    machine.kill();
    machine.begin(settings);
    CHECK(machine.isUnderWay());
    CHECK(*machine.status().stringForKey("State") == "running");
    machine.advance(minutes(20));
    CHECK(machine.starts() == 1);
    machine.endBackup(0);
    CHECK(machine.told() == Texts{"Started the backup of 01:00.", "The backup succeeded; it took 20 minutes."});
}

TEST_CASE("a helper that begins again learns how a backup ended meanwhile")
{
    const auto settings = EnforcedMachine::everyMinutes(5);
    EnforcedMachine machine(settings);
    machine.advance(minutes(5));
    machine.kill();
    scripted::backups::end(0);
    scripted::clock::advance(minutes(1));
    machine.begin(settings);
    CHECK_FALSE(machine.isUnderWay());
    CHECK(machine.events() == Texts{"00:05:00 start", "00:06:00 end success"});
}

TEST_CASE("a backup that is gone without an end has failed, when the helper begins again")
{
    const auto settings = EnforcedMachine::everyMinutes(30);
    EnforcedMachine machine(settings);
    machine.advance(minutes(30));
    machine.kill();
    scripted::backups::vanish();
    scripted::clock::advance(minutes(2));
    machine.begin(settings);
    CHECK(
        machine.told()
        == Texts{"Started the backup of 00:30.", "The backup failed: it stopped before its end. Due again at 00:37."});
    machine.advance(minutes(5));
    CHECK(machine.starts() == 2);
}

TEST_CASE("a backup that was started just before the helper's end is given half a minute to come to life")
{
    const auto settings = EnforcedMachine::everyMinutes(30);
    EnforcedMachine machine(settings);
    machine.advance(minutes(30));
    machine.kill();
    scripted::backups::vanish();
    machine.begin(settings);
    CHECK(*machine.status().stringForKey("State") == "running");
    machine.advance(seconds(29));
    CHECK(machine.isUnderWay());
    machine.advance(seconds(1));
    CHECK_FALSE(machine.isUnderWay());
    CHECK(machine.events() == Texts{"00:30:00 start", "00:30:30 end failure"});
}

TEST_CASE("a moment for which a backup was started is not started again after a kill")
{
    const auto settings = EnforcedMachine::daily({"09:00"});
    EnforcedMachine machine(settings);
    machine.advanceTo("09:00:00");
    machine.endBackup(0);
    machine.kill();
    machine.begin(settings);
    machine.advance(minutes(5));
    CHECK(machine.starts() == 1);
}

TEST_CASE("a moment that came and went while there was no helper is told as missed")
{
    const auto settings = EnforcedMachine::daily({"09:00"});
    EnforcedMachine machine(settings);
    machine.kill();
    scripted::clock::advance(hours(12));
    machine.begin(settings);
    CHECK(machine.told() == Texts{"Missed the backup of 09:00: the computer was asleep or off."});
    machine.kill();
    machine.begin(settings);
    CHECK(machine.told().empty());
}

TEST_CASE("more than five moments are told as one with their number")
{
    const auto settings = EnforcedMachine::daily({"01:00", "02:00", "03:00", "04:00", "05:00", "06:00"});
    EnforcedMachine machine(settings);
    machine.kill();
    scripted::clock::advance(hours(12));
    machine.begin(settings);
    CHECK(machine.told() == Texts{"Missed 6 backups, the last of them that of 06:00: the computer was asleep or off."});
    CHECK(machine.status().arrayForKey("Journal")->front().dictionary()->integerForKey("Count") == 6);
}

TEST_CASE("a moment that came while there was no helper is still due for ten minutes")
{
    const auto settings = EnforcedMachine::daily({"09:00"});
    EnforcedMachine machine(settings);
    machine.kill();
    scripted::clock::advance(hours(9) + minutes(10));
    machine.begin(settings);
    CHECK(machine.told() == Texts{"Started the backup of 09:00."});
}

TEST_CASE("a schedule that was stored just before the helper's end comes into force when it begins again")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    machine.advance(minutes(4));
    machine.kill();
    machine.begin(EnforcedMachine::everyMinutes(10));
    machine.advance(minutes(9));
    CHECK(machine.starts() == 0);
    machine.advance(minutes(1));
    CHECK(machine.starts() == 1);
}

TEST_CASE("the same schedule stays in force over a restart")
{
    const auto settings = EnforcedMachine::everyMinutes(5);
    EnforcedMachine machine(settings);
    machine.advance(minutes(4));
    machine.kill();
    machine.begin(settings);
    machine.advance(minutes(1));
    CHECK(machine.starts() == 1);
}

TEST_CASE("a clock that was put back by a day while there was no helper makes it wait for no far future")
{
    const auto settings = EnforcedMachine::everyMinutes(60);
    EnforcedMachine machine(settings);
    machine.advance(hours(1));
    machine.endBackup(0);
    machine.kill();
    scripted::clock::setClockBy(-hours(24));
    machine.begin(settings);
    machine.advance(hours(1));
    CHECK(machine.starts() == 2);
}

TEST_CASE("a change of zone while there was no helper is one")
{
    const auto settings = EnforcedMachine::daily({"09:00"});
    EnforcedMachine machine(settings);
    machine.kill();
    scripted::clock::setZone("Asia/Tokyo");
    scripted::clock::advance(hours(1));
    machine.begin(settings);
    CHECK(machine.told().empty());
    CHECK(*machine.status().stringForKey("Zone") == "Asia/Tokyo");
}
