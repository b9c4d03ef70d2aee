#include "diagnostics/log/ZRKLog.h"
#include "helper/enforcement/StatusNotifier.h"
#include "platform/Queue.h"
#include "protocol/ErrorCodes.h"
#include "scheduling/InstantDate.h"
#include "tests/enforcement/EnforcedMachine.h"
#include "tests/platform/ScriptedBackups.h"
#include "tests/platform/ScriptedClock.h"
#include "tests/platform/ScriptedConditions.h"
#include "tests/platform/ScriptedNotifications.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/platform/ScriptedSystemLog.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <initializer_list>
#include <iterator>
#include <memory>

using platform::Dictionary;
using std::chrono::hours;
using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;
using Texts = std::vector<std::string>;

namespace {

constexpr platform::PowerState onBattery{.isKnown = true, .onBattery = true};
constexpr platform::PowerState onMains{.isKnown = true, .onBattery = false};

void setPower(EnforcedMachine& machine, const platform::PowerState& state)
{
    scripted::conditions::setPower(state);
    machine.flush();
}

std::string stateOf(EnforcedMachine& machine)
{
    return *machine.status().stringForKey("State");
}

// What the log was told since it was asked last, each with its level before it.
Texts logged()
{
    Texts texts;
    for (const auto& message : scripted::log::messages()) {
        if (message.sink == scripted::log::Sink::Unified)
            texts.push_back((message.type == LogLevelError ? "error: " : "") + message.text);
    }
    scripted::log::reset();
    return texts;
}

} // namespace

TEST_CASE("an interval starts a backup when its minutes are over, and tells of its start and end")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    machine.advance(seconds(299));
    CHECK(machine.starts() == 0);
    CHECK(stateOf(machine) == "waiting");
    machine.advance(seconds(1));
    REQUIRE(machine.starts() == 1);
    CHECK(stateOf(machine) == "running");
    CHECK(machine.isUnderWay());
    machine.advance(seconds(90));
    machine.endBackup(0);
    CHECK_FALSE(machine.isUnderWay());
    CHECK(machine.told() == Texts{"Started the backup of 00:05.", "The backup succeeded; it took 1 minute."});
    machine.advance(seconds(210));
    CHECK(machine.starts() == 2);
}

TEST_CASE("each backup has an identifier of its own that says when it was made")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(1));
    for (int count = 0; count < 3; ++count) {
        machine.advance(minutes(1));
        machine.endBackup(0);
        machine.advance(minutes(1));
    }
    const auto jobs = scripted::backups::started();
    REQUIRE(jobs.size() >= 3);
    CHECK(jobs[0].identifier.starts_with("2026-01-01T00-01-00-"));
    CHECK(jobs[0].identifier.size() == std::size("2026-01-01T00-01-00-123456") - 1);
    CHECK(jobs[0].identifier != jobs[1].identifier);
    CHECK(jobs[0].commands == std::vector<Texts>{{"/bin/true", jobs[0].identifier}});
}

TEST_CASE("on battery power a backup waits, says so once, and starts as soon as the computer is plugged in")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    setPower(machine, onBattery);
    machine.advance(minutes(5));
    CHECK(machine.starts() == 0);
    CHECK(stateOf(machine) == "blocked");
    machine.advance(hours(1));
    CHECK(machine.told() == Texts{"Waiting to back up: on battery power."});
    setPower(machine, onMains);
    CHECK(machine.starts() == 1);
    CHECK(machine.told() == Texts{"Started the backup of 00:05."});
}

TEST_CASE("everything that stands in the way is told, and every change of it")
{
    auto settings = EnforcedMachine::everyMinutes(5);
    settings.set(ScheduleKey::DontRunWhenPassive, true);
    settings.set(ScheduleKey::DontRunWithSleepPreventers, true);
    settings.set(ScheduleKey::DontRunWhenNotNetworkWired, true);
    EnforcedMachine machine(settings);
    setPower(machine, onBattery);
    scripted::conditions::setUse({.isKnown = true, .isPassive = true, .unusedSince = {}});
    machine.advance(minutes(5));
    scripted::conditions::setSleepPreventers({.isKnown = true, .names = {"A film"}});
    machine.flush();
    scripted::conditions::setRoute({.isKnown = true, .isWired = false, .interface = "wlan0"});
    machine.flush();
    scripted::conditions::setUse({.isKnown = true, .isPassive = false, .unusedSince = {}});
    machine.flush();
    setPower(machine, onMains);
    CHECK(machine.events()
          == Texts{"00:05:00 blocked battery passive", "00:05:00 blocked battery passive sleepPreventers",
                   "00:05:00 blocked battery passive sleepPreventers notWired",
                   "00:05:00 blocked battery sleepPreventers notWired", "00:05:00 blocked sleepPreventers notWired"});
    CHECK(machine.status().arrayForKey("Reasons")->size() == 2);
    CHECK(machine.starts() == 0);
}

TEST_CASE("without a backup program a backup waits for one")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    machine.chooseProgram(false);
    machine.advance(minutes(5));
    CHECK(machine.told() == Texts{"Waiting to back up: no backup program is chosen, or it is not there."});
    CHECK_FALSE(machine.status().contains("Program"));
    machine.chooseProgram(true);
    CHECK(machine.starts() == 1);
    CHECK(*machine.status().stringForKey("Program") == "Test Program");
}

TEST_CASE("no backup starts while the installation is changed")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    machine.setMaintenance(true);
    machine.advance(minutes(5));
    CHECK(machine.starts() == 0);
    CHECK_FALSE(machine.isUnderWay());
    CHECK(machine.told() == Texts{"Waiting to back up: an update or the uninstallation is at work."});
    machine.setMaintenance(false);
    CHECK(machine.starts() == 1);
}

TEST_CASE("a calendar moment that stays blocked for ten minutes is missed, and the reason is told")
{
    EnforcedMachine machine(EnforcedMachine::daily({"09:00", "17:00"}));
    setPower(machine, onBattery);
    machine.advanceTo("09:00:00");
    machine.advanceTo("09:10:00");
    CHECK(machine.told() == Texts{"Waiting to back up: on battery power."});
    machine.advanceTo("09:10:01");
    CHECK(machine.told() == Texts{"Missed the backup of 09:00: the computer was on battery power."});
    setPower(machine, onMains);
    CHECK(machine.starts() == 0);
    machine.advanceTo("17:00:00");
    CHECK(machine.starts() == 1);
}

TEST_CASE("a calendar moment in sleep is missed, and told on waking")
{
    EnforcedMachine machine(EnforcedMachine::daily({"09:00"}));
    machine.advanceTo("08:00:00");
    machine.sleep(hours(4));
    CHECK(machine.told() == Texts{"Missed the backup of 09:00: the computer was asleep."});
    CHECK(machine.starts() == 0);
}

TEST_CASE("a calendar that catches up makes one backup on waking for all that sleep took")
{
    EnforcedMachine machine(EnforcedMachine::daily({"09:00", "10:00", "11:00"}, true));
    machine.advanceTo("08:00:00");
    machine.sleep(hours(4));
    CHECK(machine.told() == Texts{"Started the backup of 09:00."});
    machine.endBackup(0);
    machine.advance(hours(3));
    CHECK(machine.starts() == 1);
}

TEST_CASE("an announced sleep that does not come is forgotten after a minute")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    machine.advance(seconds(290));
    scripted::clock::sleep(seconds(0));
    machine.flush();
    machine.advance(seconds(10));
    CHECK(machine.starts() == 1);
}

TEST_CASE("a failed backup is told with its status and is due again after 5 minutes")
{
    EnforcedMachine machine(EnforcedMachine::daily({"09:00"}));
    machine.advanceTo("09:00:00");
    machine.endBackup(2);
    CHECK(machine.told()
          == Texts{"Started the backup of 09:00.",
                   "The backup failed: its program ended with status 2. Due again at 09:05."});
    CHECK(machine.status().integerForKey("Failures") == 1);
    machine.advance(minutes(5));
    CHECK(machine.starts() == 2);
    machine.endBackup(-9);
    CHECK(machine.told().back() == "The backup failed: its program was ended by signal 9. Due again at 09:20.");
}

TEST_CASE("a failed backup is told with its reason where there is one")
{
    EnforcedMachine machine(EnforcedMachine::daily({"09:00"}));
    machine.advanceTo("09:00:00");
    machine.endBackup(2, "it was stopped.");
    CHECK(machine.told().back() == "The backup failed: it was stopped. Due again at 09:05.");
    machine.advance(minutes(5));
    machine.endBackup(0, "it was stopped.");
    CHECK(machine.told().back() == "The backup succeeded; it took 0 seconds.");
}

TEST_CASE("a backup that ends with a warning of its program has succeeded")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    machine.advance(minutes(5));
    machine.endBackup(1);
    CHECK(machine.told().back() == "The backup succeeded; it took 0 seconds.");
    CHECK(machine.status().contains("LastSucceeded"));
}

TEST_CASE("a backup that cannot be started has failed at once, and is tried again")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    scripted::backups::setStartFailure(platform::Error{
        platform::POSIXErrorDomain, 2, {{platform::LocalizedDescriptionKey, "Nothing is there."}}, nullptr});
    machine.advance(minutes(5));
    CHECK(machine.told().back() == "The backup failed: It could not be started: Nothing is there. Due again at 00:10.");
    CHECK_FALSE(machine.isUnderWay());
    scripted::backups::setStartFailure(std::nullopt);
    machine.advance(minutes(5));
    CHECK(machine.starts() == 1);
}

TEST_CASE("a backup by hand starts whatever the conditions, and while backups are off")
{
    EnforcedMachine machine;
    setPower(machine, onBattery);
    CHECK(stateOf(machine) == "off");
    REQUIRE(machine.startNow());
    CHECK(machine.starts() == 1);
    CHECK(machine.told() == Texts{"Started a backup by hand."});
    CHECK(stateOf(machine) == "running");
}

TEST_CASE("a backup by hand is refused while one runs, while the installation is changed, and without a program")
{
    EnforcedMachine machine;
    REQUIRE(machine.startNow());
    CHECK(machine.startNow().error().code == BRVErrorBackupRunning);
    machine.endBackup(0);
    machine.setMaintenance(true);
    CHECK(machine.startNow().error().code == BRVErrorUpdateRunning);
    machine.setMaintenance(false);
    machine.chooseProgram(false);
    const auto refused = machine.startNow();
    CHECK(refused.error().domain == BRVErrorDomain);
    CHECK(refused.error().code == BRVErrorMissingValue);
    CHECK(machine.starts() == 1);
}

TEST_CASE("a backup that starts without its program failing tells whoever asked for it")
{
    EnforcedMachine machine;
    scripted::backups::setStartFailure(platform::Error{platform::POSIXErrorDomain, 5, {}, nullptr});
    const auto refused = machine.startNow();
    REQUIRE_FALSE(refused);
    CHECK(refused.error().domain == ZRKSpawnerErrorDomain);
    CHECK(machine.events() == Texts{"00:00:00 start", "00:00:00 end failure"});
}

TEST_CASE(
    "a clock put back by less than an hour starts nothing again, and one put back by a day waits for no far future")
{
    EnforcedMachine machine(EnforcedMachine::daily({"09:00"}));
    machine.advanceTo("09:00:00");
    machine.endBackup(0);
    machine.setClockBy(minutes(-30));
    machine.advance(hours(2));
    CHECK(machine.starts() == 1);
    machine.apply(EnforcedMachine::everyMinutes(60));
    machine.setClockBy(-hours(24));
    machine.advance(hours(1));
    CHECK(machine.starts() == 2);
}

TEST_CASE("a clock put forward over a moment misses it")
{
    EnforcedMachine machine(EnforcedMachine::daily({"09:00"}));
    machine.advanceTo("08:00:00");
    machine.setClockBy(hours(2));
    CHECK(machine.events() == Texts{"10:00:00 missed asleep"});
}

TEST_CASE("a clock that is set while a backup runs leaves the backup alone, and its length is true time")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(60));
    CHECK(machine.startNow());
    machine.told();
    machine.advance(minutes(2));
    SUBCASE("forward")
    {
        machine.setClockBy(std::chrono::hours(5));
    }
    SUBCASE("back")
    {
        machine.setClockBy(-std::chrono::hours(5));
    }
    machine.advance(minutes(1));
    CHECK(machine.starts() == 1);
    CHECK(machine.isUnderWay());
    machine.endBackup(0);
    CHECK(machine.told().back() == "The backup succeeded; it took 3 minutes.");
    CHECK(machine.starts() == 1);
}

TEST_CASE("a backup that takes more than twice its usual time is told and left alone")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    CHECK(machine.startNow());
    machine.advance(minutes(7));
    machine.endBackup(0);
    CHECK(machine.startNow());
    CHECK(scripted::backups::started().back().overdueAfter == minutes(14));
    scripted::backups::becomeOverdue();
    machine.flush();
    CHECK(machine.isUnderWay());
    machine.endBackup(0);
    CHECK(*machine.status().stringForKey("State") == "waiting");
}

TEST_CASE("in another zone the moments are those of that zone")
{
    EnforcedMachine machine(EnforcedMachine::daily({"09:00"}));
    scripted::clock::setZone("Asia/Kathmandu");
    machine.flush();
    CHECK(*machine.status().stringForKey("Zone") == "Asia/Kathmandu");
    machine.advanceTo("03:15:00");
    CHECK(machine.starts() == 1);
}

TEST_CASE("a zone that nobody knows changes nothing")
{
    EnforcedMachine machine(EnforcedMachine::daily({"09:00"}));
    scripted::clock::setZone("Nowhere/At All");
    machine.flush();
    CHECK(*machine.status().stringForKey("Zone") == "UTC");
}

TEST_CASE("when inactive a backup starts 5 minutes after the computer was used last")
{
    EnforcedMachine machine({{ScheduleKey::Backups, true}, {ScheduleKey::BackupsMode, BackupsModeWhenInactive}});
    machine.advance(hours(2));
    CHECK(machine.starts() == 0);
    CHECK_FALSE(machine.status().contains("Due"));
    scripted::conditions::setUse(
        {.isKnown = true, .isPassive = false, .unusedSince = platform::readClocks().sinceBoot - seconds(100)});
    machine.flush();
    machine.advance(seconds(199));
    CHECK(machine.starts() == 0);
    machine.advance(seconds(1));
    CHECK(machine.starts() == 1);
}

TEST_CASE("the computer is kept awake during a backup only when that was chosen, and only so long")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    machine.advance(minutes(5));
    CHECK(scripted::conditions::reasonsAgainstSleep().empty());
    machine.endBackup(0);
    machine.chooseProgram(true, true);
    machine.advance(minutes(5));
    CHECK(scripted::conditions::reasonsAgainstSleep() == Texts{"A backup is running."});
    machine.endBackup(0);
    CHECK(scripted::conditions::reasonsAgainstSleep().empty());
}

TEST_CASE("the status tells the next 20 moments, also while backups are off, and that it is off")
{
    auto settings = EnforcedMachine::daily({"09:00"});
    settings.set(ScheduleKey::Backups, false);
    EnforcedMachine machine(settings);
    const auto status = machine.status();
    CHECK(*status.stringForKey("State") == "off");
    const auto* const upcoming = status.arrayForKey("Upcoming");
    REQUIRE(upcoming);
    REQUIRE(upcoming->size() == 20);
    CHECK(*upcoming->front().dictionary()->stringForKey("Local") == "2026-01-01T09:00:00+00:00");
    machine.advance(hours(48));
    CHECK(machine.starts() == 0);
}

TEST_CASE("the status marks suspended moments")
{
    auto settings = EnforcedMachine::daily({"09:00", "12:00"});
    settings.set(ScheduleKey::Suspend, true);
    settings.set(ScheduleKey::SuspendSettings, Dictionary{{ScheduleKey::StartHour, 8}, {ScheduleKey::EndHour, 10}});
    EnforcedMachine machine(settings);
    const auto status = machine.status();
    const auto* const upcoming = status.arrayForKey("Upcoming");
    REQUIRE(upcoming);
    CHECK((*upcoming)[0].dictionary()->boolForKey("Suspended"));
    CHECK_FALSE((*upcoming)[1].dictionary()->boolForKey("Suspended"));
}

TEST_CASE("the status tells when a backup is due, as soon as that is known")
{
    constexpr scheduling::Instant midnight = 1'767'225'600;
    EnforcedMachine machine;
    CHECK_FALSE(machine.status().contains("Due"));
    machine.apply(EnforcedMachine::everyMinutes(5));
    REQUIRE(machine.status().contains("Due"));
    CHECK(*machine.status().find("Due") == platform::PropertyList(scheduling::dateOf(midnight + 300)));
}

TEST_CASE("programs are told of a change of the status, and not of looking at it")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    machine.advance(seconds(1));
    scripted::notifications::reset();
    machine.status();
    machine.status();
    CHECK(scripted::notifications::posted().empty());
    machine.advance(minutes(5));
    CHECK(scripted::notifications::posted() == Texts{"com.zerkolin.brevane.status"});
    scripted::notifications::reset();
    machine.endBackup(0);
    machine.apply(EnforcedMachine::everyMinutes(6));
    machine.apply(EnforcedMachine::everyMinutes(7));
    CHECK(scripted::notifications::posted().empty());
    machine.advance(seconds(1));
    CHECK(scripted::notifications::posted() == Texts{"com.zerkolin.brevane.status"});
}

TEST_CASE("changes are told at once, and then together after a pause, however late the timer is")
{
    scripted::reset();
    const Texts once{"changed"};
    const Texts twice{"changed", "changed"};
    const auto queue = platform::Queue::createSerial("telling");
    std::unique_ptr<helper::StatusNotifier> notifier;
    queue->sync([&] {
        notifier = std::make_unique<helper::StatusNotifier>("changed", queue);
        notifier->changed();
        notifier->changed();
    });
    CHECK(scripted::notifications::posted() == once);
    scripted::clock::advance(milliseconds(299));
    queue->sync([] { });
    CHECK(scripted::notifications::posted() == once);
    queue->sync([&] {
        scripted::clock::advance(milliseconds(1)); // the timer waits for this to end
        notifier->changed();
    });
    queue->sync([&] { notifier->changed(); });
    CHECK(scripted::notifications::posted() == twice);
    queue->sync([&] { notifier.reset(); });
}

TEST_CASE("while another program backs up nothing starts, and what was due starts at its end")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    machine.runOtherBackup(true);
    CHECK(stateOf(machine) == "running");
    machine.advance(minutes(5));
    CHECK(machine.told() == Texts{"Waiting to back up: a backup is running."});
    CHECK(machine.startNow().error().code == BRVErrorBackupRunning);
    machine.runOtherBackup(false);
    CHECK(machine.starts() == 1);
}

TEST_CASE("what goes well or waits is no error in the log, what fails or is missed is one")
{
    EnforcedMachine machine(EnforcedMachine::daily({"09:00", "12:00", "15:00"}));
    ZRKLogInit("com.zerkolin.brevane", "scheduler");
    REQUIRE(ZRKLOG_UNIFIED);
    logged();
    machine.advanceTo("09:00:00");
    CHECK(logged() == Texts{"Started the backup of 09:00."});
    scripted::backups::becomeOverdue();
    machine.flush();
    CHECK(logged() == Texts{"error: The backup takes more than twice its usual time. It is left alone."});
    machine.endBackup(0);
    CHECK(logged() == Texts{"The backup succeeded; it took 0 seconds."});
    setPower(machine, onBattery);
    machine.advanceTo("12:00:00");
    CHECK(logged() == Texts{"Waiting to back up: on battery power."});
    machine.advanceTo("12:10:01");
    CHECK(logged() == Texts{"error: Missed the backup of 12:00: the computer was on battery power."});
    setPower(machine, onMains);
    machine.advanceTo("15:00:00");
    machine.endBackup(2);
    CHECK(logged()
          == Texts{"Started the backup of 15:00.",
                   "error: The backup failed: its program ended with status 2. Due again at 15:05."});
    machine.setClockBy(seconds(10));
    CHECK(logged() == Texts{"The clock was set from 2026-01-01T15:00:00Z to 2026-01-01T15:00:10Z."});
}

TEST_CASE("a backup takes long after twice the middle one of the latest nine lengths, and never within ten minutes")
{
    EnforcedMachine machine;
    const auto overdueAfter = [&] { return scripted::backups::started().back().overdueAfter; };
    const auto backUp = [&](std::initializer_list<int> lengths) {
        for (const int length : lengths) {
            REQUIRE(machine.startNow());
            machine.advance(minutes(length));
            machine.endBackup(0);
        }
    };
    SUBCASE("few and short")
    {
        backUp({5});
        CHECK_FALSE(overdueAfter());
        backUp({4}); // after 5
        CHECK(overdueAfter() == minutes(10));
        backUp({6, 30}); // after 4, 5 and 6
        CHECK(overdueAfter() == minutes(10));
        backUp({0}); // after 4, 5, 6 and 30
        CHECK(overdueAfter() == minutes(12));
    }
    SUBCASE("nine")
    {
        backUp({1, 60, 60, 60, 60, 20, 20, 20, 20, 0});
        CHECK(overdueAfter() == minutes(40));
    }
    SUBCASE("not ten")
    {
        backUp({60, 60, 60, 60, 60, 20, 20, 20, 20, 20, 0});
        CHECK(overdueAfter() == minutes(40));
    }
}

TEST_CASE("a zone that nobody knows, and a computer that cannot be kept awake, are errors in the log")
{
    EnforcedMachine machine(EnforcedMachine::everyMinutes(5));
    ZRKLogInit("com.zerkolin.brevane", "scheduler");
    machine.chooseProgram(true, true);
    logged();
    scripted::clock::setZone("Nowhere/At All");
    machine.flush();
    CHECK(logged() == Texts{"error: The time zone 'Nowhere/At All' is not known."});
    scripted::conditions::setInhibitable(false);
    machine.advance(minutes(5));
    CHECK(machine.isUnderWay());
    const auto texts = logged();
    REQUIRE(texts.size() == 2);
    CHECK(texts[0] == "Started the backup of 00:05.");
    CHECK(texts[1].starts_with("error: The computer may fall asleep during the backup: "));
}
