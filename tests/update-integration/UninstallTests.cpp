#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "protocol/ErrorCodes.h"
#include "tests/update-integration/UpdateMachine.h"

#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace files = std::filesystem;
using platform::Dictionary;

namespace {

// What is there before and has nothing to do with the product.
void addForeignFiles(const std::string& root)
{
    for (const char* name : {"Library/Preferences/com.apple.TimeMachine.plist", "Library/Logs/other.log",
                             "Library/Logs/Brevane/application.5.log", "usr/share/file",
                             "Library/LaunchDaemons.d/other.plist", "home/file"}) {
        files::create_directories((root + "/" + name).substr(0, (root + "/" + name).rfind('/')));
        std::ofstream(root + "/" + name) << name;
    }
}

// But for the log of the sandbox's own system.
std::map<std::string, std::string> productTree(const std::string& root)
{
    auto tree = treeBelow(root);
    std::erase_if(tree, [](const auto& entry) { return entry.first.starts_with("/var"); });
    return tree;
}

std::map<std::string, std::string> withoutLogs(std::map<std::string, std::string> tree)
{
    std::erase_if(tree, [](const auto& entry) { return entry.first.ends_with(".log"); });
    return tree;
}

// As the install rules leave it: the list knows which folders were not there before.
void installCompletely(UpdateMachine& machine, const std::string& version)
{
    outputOf({"/usr/bin/python3", "-B", "-c",
              "import plistlib, sys\n"
              "path = sys.argv[1]\n"
              "manifest = plistlib.load(open(path, 'rb'))\n"
              "manifest['Folders'] = sys.argv[2:]\n"
              "plistlib.dump(manifest, open(path, 'wb'))",
              machine.product() + "/installation.plist", "Library/LaunchDaemons", "usr/bin", "Library/Brevane"});
    CHECK(machine.wholeVersion() == version);
}

} // namespace

TEST_CASE("after an uninstall everything is as it was before the installation")
{
    UpdateMachine machine;
    files::remove_all(machine.root());
    files::create_directories(machine.root());
    addForeignFiles(machine.root());
    const auto before = productTree(machine.root());
    machine.layOut("1.0");
    installCompletely(machine, "1.0");
    machine.start();
    auto settings = recordIn(machine.send(BRVMessageGetSettings));
    REQUIRE(recordIn(machine.send(BRVMessageApplySettings, settings)).contains("Applied"));
    REQUIRE(recordIn(machine.send(BRVMessageSetAutoUpdates, Dictionary{{"Enabled", true}})).contains("Applied"));
    REQUIRE(recordIn(machine.send(BRVMessageSetAllowWithoutPassword, Dictionary{{"Allow", true}})).contains("Applied"));

    for (const char* name : {"application.log", "application.0.log", "scheduler.4.log", "post-update.log"})
        std::ofstream(machine.root() + "/Library/Logs/Brevane/" + name) << "a line\n";

    SUBCASE("at once") { }
    SUBCASE("after an update")
    {
        machine.offer("2.0");
        REQUIRE(recordIn(machine.send(BRVMessageInstallUpdate)).contains("Applied"));
        REQUIRE(machine.waitForHelper("2.0"));
    }
    SUBCASE("with damaged files that were kept, and an update that was interrupted")
    {
        machine.helper().kill();
        REQUIRE(::truncate((machine.root() + "/Library/Preferences/com.zerkolin.brevane.scheduler.plist").c_str(), 9)
                == 0);
        machine.start();
        std::ofstream(machine.root() + "/Library/Preferences/.com.zerkolin.brevane.rights.plist.abcdef") << "part";
        files::create_directories(machine.root() + "/Library/.com.zerkolin.brevane.update/Brevane/bin");
    }
    REQUIRE(recordIn(machine.send(BRVMessageUninstall)) == Dictionary{{"Applied", true}});
    CHECK(machine.helper().wait() == 0);
    CHECK(productTree(machine.root()) == before);
}

TEST_CASE("an uninstall leaves what somebody else put among the product's files")
{
    UpdateMachine machine;
    machine.start();
    std::ofstream(machine.product() + "/share/mine") << "mine";
    files::remove(machine.root() + "/usr/bin/log");
    std::ofstream(machine.root() + "/usr/bin/log") << "another tool";
    REQUIRE(recordIn(machine.send(BRVMessageUninstall)).contains("Applied"));
    CHECK(machine.helper().wait() == 0);
    std::set<std::string> left;
    for (const auto& [path, content] : productTree(machine.root())) {
        if (!path.starts_with("/Library/Logs") && !path.starts_with("/Library/Preferences"))
            left.insert(path);
    }
    CHECK(left
          == std::set<std::string>{"/Library", "/Library/Brevane", "/Library/Brevane/share",
                                   "/Library/Brevane/share/mine", "/usr", "/usr/bin", "/usr/bin/log"});
}

TEST_CASE("an uninstall needs its own right")
{
    UpdateMachine machine;
    machine.start();
    machine.authority().setAnswer(BRVRightUninstall, PolkitAuthority::Answer::Denied);
    checkError(machine.send(BRVMessageUninstall), ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorValidateRights);
    CHECK(machine.wholeVersion() == "1.0");
    CHECK(machine.authority().calls().back().action == BRVRightUninstall);
}

TEST_CASE("nothing is uninstalled while another program is connected to the helper")
{
    UpdateMachine machine;
    machine.start();
    {
        ChildProcess other({BREVANE_TEST_CLIENT});
        other.write("get\n");
        REQUIRE(other.readLine() == "ok");
        checkError(machine.send(BRVMessageUninstall), BRVErrorDomain, BRVErrorPeersConnected);
        CHECK(machine.wholeVersion() == "1.0");
    }
    REQUIRE(waitUntil([&] { return machine.send(BRVMessageUninstall)->contains("payload"); }));
    CHECK(machine.helper().wait() == 0);
    CHECK_FALSE(files::exists(machine.product()));
}

TEST_CASE("an uninstall that finds a folder where a file is expected has removed nothing")
{
    UpdateMachine machine;
    const TemporaryDirectory rules;
    machine.start({}, {"--rules", rules.path()});
    REQUIRE(recordIn(machine.send(BRVMessageSetAutoUpdates, Dictionary{{"Enabled", true}})).contains("Applied"));
    REQUIRE(recordIn(machine.send(BRVMessageSetAllowWithoutPassword, Dictionary{{"Allow", true}})).contains("Applied"));
    std::string place;
    SUBCASE("among the product's files")
    {
        place = machine.product() + "/share/text";
        files::remove(place);
    }
    SUBCASE("among the settings")
    {
        place = machine.root() + "/Library/Preferences/com.zerkolin.brevane.rights.plist.damaged";
    }
    SUBCASE("among the logs")
    {
        place = machine.root() + "/Library/Logs/Brevane/application.log";
    }
    files::create_directories(place + "/somebody's");
    const auto before = productTree(machine.root());
    const auto rulesBefore = treeBelow(rules.path());
    CHECK(rulesBefore.size() == 1);
    auto error = errorIn(machine.send(BRVMessageUninstall));
    CHECK(platform::localizedDescription(error) == "'" + place + "' could not be removed. Is a directory.");
    CHECK(withoutLogs(productTree(machine.root())) == withoutLogs(before));
    CHECK(treeBelow(rules.path()) == rulesBefore);
    files::remove_all(place);
    REQUIRE(recordIn(machine.send(BRVMessageUninstall)).contains("Applied"));
    CHECK(machine.helper().wait() == 0);
    CHECK_FALSE(files::exists(machine.product()));
    CHECK(treeBelow(rules.path()).empty());
}

TEST_CASE("an uninstall follows no link that stands in a folder's place")
{
    UpdateMachine machine;
    machine.start();
    const auto outside = machine.file("outside");
    files::rename(machine.product() + "/share", outside);
    files::create_symlink(outside, machine.product() + "/share");
    const auto before = treeBelow(outside);
    REQUIRE(recordIn(machine.send(BRVMessageUninstall)).contains("Applied"));
    CHECK(treeBelow(outside) == before);
}

TEST_CASE("what cannot be removed is told, and the uninstall can be tried again")
{
    if (::geteuid() != 0) {
        MESSAGE("SKIPPED: needs root, to make a file that cannot be removed");
        return;
    }
    UpdateMachine machine;
    machine.start();
    const auto fixed = machine.product() + "/share/text";
    if (ChildProcess({"chattr", "+i", fixed}).wait() != 0) {
        MESSAGE("SKIPPED: this disk has no files that cannot be removed");
        return;
    }
    const auto before = productTree(machine.root());
    auto error = errorIn(machine.send(BRVMessageUninstall));
    outputOf({"chattr", "-i", fixed});
    CHECK(error.domain == platform::POSIXErrorDomain);
    CHECK(error.code == EPERM);
    CHECK(platform::localizedDescription(error) == "'" + fixed + "' could not be removed. Operation not permitted.");
    CHECK(withoutLogs(productTree(machine.root())) == withoutLogs(before));
    REQUIRE(recordIn(machine.send(BRVMessageUninstall)).contains("Applied"));
    CHECK(machine.helper().wait() == 0);
    CHECK_FALSE(files::exists(machine.product()));
}
