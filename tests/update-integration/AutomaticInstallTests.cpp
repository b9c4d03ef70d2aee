#include "messaging/BRVHelperMessager.h"
#include "tests/update-integration/UpdateMachine.h"

#include <chrono>
#include <doctest/doctest.h>
#include <thread>

using platform::Dictionary;

namespace {

// A helper that was told so before, with a newer version to be had, tries each second; nobody is connected to it.
void startTryingEachSecond(UpdateMachine& machine, bool enabled = true)
{
    machine.start();
    for (const bool value : {!enabled, enabled})
        REQUIRE(recordIn(machine.send(BRVMessageSetAutoUpdates, Dictionary{{"Enabled", value}})).contains("Applied"));
    machine.offer("2.0");
    machine.writeConfiguration({{"Interval", 1}});
    machine.startUnasked();
}

bool waitForVersion(UpdateMachine& machine, const std::string& version)
{
    return waitUntil([&] { return machine.wholeVersion() == version && !machine.isStaging(); });
}

} // namespace

TEST_CASE("with automatic updates on the helper installs each new version by itself")
{
    UpdateMachine machine;
    startTryingEachSecond(machine);
    const auto process = machine.helperProcess();
    CHECK(waitForVersion(machine, "2.0"));
    REQUIRE(machine.waitForHelper("2.0"));
    CHECK(waitUntil([&] { return machine.helperProcess() == process; }));
    REQUIRE(waitUntil([&] { return machine.log().contains("You are already running the latest version."); }));
    machine.offer("2.1");
    CHECK(waitForVersion(machine, "2.1"));
    REQUIRE(machine.waitForHelper("2.1"));
    CHECK(recordIn(machine.send(BRVMessageGetAutoUpdates)) == Dictionary{{"Enabled", true}});
}

TEST_CASE("with automatic updates off the helper installs nothing by itself")
{
    UpdateMachine machine;
    startTryingEachSecond(machine, false);
    std::this_thread::sleep_for(std::chrono::seconds(3));
    CHECK(machine.wholeVersion() == "1.0");
    CHECK_FALSE(machine.log().contains("Installing version"));
}

TEST_CASE("automatic updates that are switched on while the helper runs begin at once to wait for their time")
{
    UpdateMachine machine;
    startTryingEachSecond(machine, false);
    {
        ChildProcess other({BREVANE_TEST_CLIENT});
        other.write("set\n");
        REQUIRE(other.readLine() == "ok");
    }
    CHECK(waitForVersion(machine, "2.0"));
}

TEST_CASE("while a program is connected to the helper it does not update itself, and does so once the program is gone")
{
    UpdateMachine machine;
    startTryingEachSecond(machine);
    {
        ChildProcess other({BREVANE_TEST_CLIENT});
        other.write("get\n");
        REQUIRE(other.readLine() == "ok");
        REQUIRE(waitUntil([&] { return machine.log().contains("Peers are connected."); }));
        std::this_thread::sleep_for(std::chrono::seconds(2));
        CHECK(machine.wholeVersion() == "1.0");
    }
    CHECK(waitForVersion(machine, "2.0"));
}

TEST_CASE("a program that only watches the status of backups holds up no update")
{
    UpdateMachine machine;
    startTryingEachSecond(machine);
    ChildProcess other({BREVANE_TEST_CLIENT});
    other.write("watch\n");
    REQUIRE(other.readLine() == "ok");
    CHECK(waitForVersion(machine, "2.0"));
    CHECK(other.isRunning());
}

TEST_CASE("while a backup runs the helper does not update itself, and does so when it is over")
{
    UpdateMachine machine;
    const auto backup = machine.startBackup();
    startTryingEachSecond(machine);
    REQUIRE(waitUntil([&] { return machine.log().contains("A backup operation is currently running."); }));
    std::this_thread::sleep_for(std::chrono::seconds(2));
    CHECK(machine.wholeVersion() == "1.0");
    backup->kill();
    CHECK(waitForVersion(machine, "2.0"));
}
