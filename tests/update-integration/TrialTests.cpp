#include "messaging/BRVHelperMessager.h"
#include "protocol/ErrorCodes.h"
#include "tests/update-integration/UpdateMachine.h"

#include <cerrno>
#include <chrono>
#include <csignal>
#include <doctest/doctest.h>
#include <filesystem>
#include <map>
#include <sysexits.h>

namespace files = std::filesystem;
using platform::Dictionary;

namespace {

constexpr const char* staging = "/Library/.com.zerkolin.brevane.update";
constexpr const char* helperName = "/com.zerkolin.brevane.scheduler";

// A good package but for its helper, of one of the kinds of packages.py, and an update with it.
platform::ServiceReply installOddHelper(UpdateMachine& machine, const std::string& kind,
                                        const ChildProcess::Arguments& before = {})
{
    machine.writeConfiguration({{"Trial", 2}});
    machine.start(before);
    machine.makePackage(machine.keyPath(), "2.0", kind);
    machine.serveFeed({{"Version", "2.0"}, {"HumanVersion", "2"}, {"Package", "Brevane.pkg"}});
    return machine.send(BRVMessageInstallUpdate);
}

bool isBack(UpdateMachine& machine)
{
    return waitUntil([&] { return machine.wholeVersion() == "1.0" && !machine.isStaging(); });
}

// What a version consists of and keeps, without what is logged.
std::map<std::string, std::string> libraryOf(const UpdateMachine& machine)
{
    auto tree = treeBelow(machine.root() + "/Library");
    std::erase_if(tree, [](const auto& entry) { return entry.first.starts_with("/Logs"); });
    return tree;
}

// As a kill of everything right after the exchange leaves it: version 2.0 in place, and 1.0 beside it.
void leaveOnTrial(UpdateMachine& machine)
{
    machine.layoutOf("1.0");
    machine.layOut("2.0");
    files::create_directories(machine.root() + staging);
    files::copy(machine.layoutOf("1.0") + "/Library/Brevane", machine.root() + staging + "/other",
                files::copy_options::recursive | files::copy_options::copy_symlinks);
}

} // namespace

TEST_CASE("a version whose helper does not start here is refused before it takes the old one's place")
{
    UpdateMachine machine;
    std::string kind;
    std::string reason;
    SUBCASE("for want of a library")
    {
        kind = "missing-library";
        reason = "its helper ends with status 127.";
    }
    SUBCASE("because it never comes to an end")
    {
        kind = "endless-check";
        reason = "its helper does not answer in time.";
    }
    const auto error = errorIn(installOddHelper(machine, kind));
    CHECK(error.domain == ZRKUpdaterErrorDomain);
    CHECK(error.code == ZRKUpdaterErrorValidate);
    REQUIRE(error.underlying);
    CHECK(error.underlying->code == EBADMSG);
    CHECK(platform::localizedDescription(*error.underlying) == "The new version cannot work here: " + reason);
    CHECK(machine.wholeVersion() == "1.0");
    CHECK_FALSE(machine.isStaging());
    CHECK(machine.log().contains("libsystemd.so.9") == (kind == "missing-library"));
    CHECK(recordIn(machine.send(BRVMessageGetAutoUpdates)) == Dictionary{{"Enabled", false}});
    CHECK(machine.processes().size() == 1);
}

TEST_CASE("when the new version does not come to serve, the old one is back by itself, and serves")
{
    UpdateMachine machine;
    std::string kind;
    int status = 0;
    SUBCASE("because it ends")
    {
        kind = "never-serves";
        status = 1;
    }
    SUBCASE("because it takes too long")
    {
        kind = "endless-start";
        status = -SIGKILL;
    }
    CHECK(recordIn(installOddHelper(machine, kind)).contains("Applied"));
    CHECK(isBack(machine));
    REQUIRE(waitUntil([&] { return !machine.helper().isRunning(); }));
    CHECK(machine.helper().wait() == status);
    REQUIRE(waitUntil([&] { return machine.send(BRVMessageGetAutoUpdates).has_value(); }));
    CHECK(machine.log().contains("Version 2.0 has not served a request. Version 1.0 is back."));
    machine.offer("2.1");
    CHECK(recordIn(machine.send(BRVMessageInstallUpdate)).contains("Applied"));
    CHECK(machine.waitForTrial());
    CHECK(machine.wholeVersion() == "2.1");
}

TEST_CASE("under a service manager the old version is put back, and starting it is the manager's business")
{
    UpdateMachine machine;
    const ChildProcess::Arguments unit{"sh", "-c", "SYSTEMD_EXEC_PID=$$ exec \"$0\" \"$@\""};
    CHECK(recordIn(installOddHelper(machine, "never-serves", unit)).contains("Applied"));
    CHECK(machine.helper().wait() == 1);
    CHECK(waitUntil([&] { return machine.processes().empty(); }));
    CHECK(machine.wholeVersion() == "1.0");
    machine.start();
    CHECK(machine.waitForTrial());
    CHECK(machine.wholeVersion() == "1.0");
}

TEST_CASE("a service that is told to stop before the new version has served begins with the old one")
{
    UpdateMachine machine;
    CHECK(recordIn(installOddHelper(machine, "endless-start")).contains("Applied"));
    REQUIRE(waitUntil([&] { return machine.helperProcess() <= 0; }));
    for (const auto process : machine.processes())
        CHECK(::kill(process, SIGTERM) == 0);
    CHECK(waitUntil([&] { return machine.processes().empty(); }));
    CHECK(machine.wholeVersion() == "1.0");
}

TEST_CASE("a new version that was cut off before it served is taken back by whoever starts the service anew")
{
    UpdateMachine machine;
    leaveOnTrial(machine);
    CHECK(machine.wholeVersion() == "2.0");
    outputOf({machine.root() + staging + "/other" + helperName, "--take-back", "--root", machine.root()});
    CHECK(machine.wholeVersion() == "1.0");
    machine.start();
    CHECK(machine.waitForTrial());
    CHECK(machine.wholeVersion() == "1.0");
}

TEST_CASE("nothing is taken back where nothing is on trial, or while another process has the trial in hand")
{
    UpdateMachine machine;
    leaveOnTrial(machine);
    const auto other = machine.root() + staging + "/other" + helperName;
    const auto before = libraryOf(machine);
    const auto takeBack = [&](const std::string& program) {
        CHECK(ChildProcess({program, "--take-back", "--root", machine.root()}).wait() == 0);
    };
    {
        ChildProcess holder({"flock", machine.root() + staging, "sh", "-c", "echo held; read line"});
        REQUIRE(holder.readLine() == "held");
        takeBack(other);
        CHECK(libraryOf(machine) == before);
    }
    takeBack(other);
    CHECK(machine.wholeVersion() == "1.0");
    CHECK(machine.log().contains("The new version was not seen to serve a request. The old one is back."));
    const auto after = libraryOf(machine);
    takeBack(machine.product() + helperName);
    const auto log = machine.log();
    CHECK(log.find("The old one is back.") == log.rfind("The old one is back."));
    CHECK(libraryOf(machine) == after);
}

TEST_CASE("a new version that was cut off and starts again is watched again until it serves")
{
    UpdateMachine machine;
    leaveOnTrial(machine);
    machine.start();
    CHECK(machine.waitForTrial());
    CHECK(machine.wholeVersion() == "2.0");
    CHECK(machine.log().contains("Version 2.0 is on trial."));
    CHECK(waitUntil([&] { return machine.processes().size() == 1; }));
}

TEST_CASE("a helper checks by itself whether it could work, and changes nothing")
{
    UpdateMachine machine;
    const auto before = treeBelow(machine.root());
    const auto program = machine.product() + helperName;
    CHECK(ChildProcess({program, "--self-check", "--root", machine.root()}).wait() == 0);
    const auto refusal = [&](const std::string& options, int status) {
        ChildProcess check({"sh", "-c", "\"$0\" --self-check " + options + " 2>&1", program});
        const auto text = check.readAll();
        CHECK(check.wait() == status);
        return text;
    };
    CHECK(refusal("--root", EX_USAGE) == "The arguments are not understood.\n");
    CHECK(ChildProcess({program, "--self-check"}, {{"DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent"}}).wait()
          == EX_UNAVAILABLE);
    CHECK(treeBelow(machine.root()) == before);
    files::remove(machine.product() + "/installation.plist");
    CHECK(refusal("", EX_CONFIG) == "There is no list of this version in '" + machine.product() + "'.\n");
}
