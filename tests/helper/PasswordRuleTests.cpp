#include "diagnostics/log/ZRKLog.h"
#include "helper/DefaultRights.h"
#include "helper/linux/PolkitRules.h"
#include "helper/PasswordRule.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/AtomicFile.h"
#include "platform/Authorization.h"
#include "platform/Folder.h"
#include "platform/SystemInformation.h"
#include "protocol/Messages.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <cerrno>
#include <doctest/doctest.h>
#include <grp.h>
#include <memory>
#include <unistd.h>

using platform::Array;
using platform::Dictionary;

namespace {

struct Machine {
    TemporaryDirectory root;
    EnvironmentVariable variable{"BREVANE_ROOT", root.path()};
    EnvironmentVariable home{"HOME", root.file("home")};
    std::string rules = root.write("rules.d/10-other.rules", "").substr(0, root.path().size() + 8);
    std::string file = rules + "/49-com.zerkolin.brevane.rules";
    std::string store = root.file("Library/Preferences/com.zerkolin.brevane.rights.plist");
    helper::PasswordRule rule{std::make_shared<helper::PolkitRules>(rules)};

    Machine() { REQUIRE(platform::createFolder(root.file("Library/Preferences"))); }

    static std::string storedRule()
    {
        const auto definition = platform::Authorization::right(BRVRightModifySettings1).value_or(Dictionary());
        const auto* rule = definition.arrayForKey("rule");
        return rule && rule->size() == 1 && rule->front().string() ? *rule->front().string() : "none";
    }
    bool isWritten() const { return ::access(file.c_str(), F_OK) == 0; }
};

} // namespace

TEST_CASE("what agrees is left as it is at the start")
{
    Machine machine;
    helper::installDefaultRights();
    REQUIRE(machine.rule.takeStricter().has_value());
    CHECK(machine.storedRule() == "authenticate-admin");
    REQUIRE(machine.rule.setAllowsWithoutPassword(true).has_value());
    REQUIRE(machine.rule.takeStricter().has_value());
    CHECK(machine.storedRule() == "is-admin");
    CHECK(machine.isWritten());
}

TEST_CASE("a rules file without the stored rule is removed at the start")
{
    Machine machine;
    ZRKLogInit("com.zerkolin.brevane.tests", "rules");
    REQUIRE(machine.rule.setAllowsWithoutPassword(true).has_value());
    REQUIRE(ZRKAuthorizationManager::setAuthorizationRights(
                {{BRVRightModifySettings1, {{"rule", Array{"authenticate-admin"}}}}})
                .has_value());
    REQUIRE(machine.rule.takeStricter().has_value());
    CHECK_FALSE(machine.isWritten());
    CHECK(machine.storedRule() == "authenticate-admin");
    const auto text = "The stored rule and '" + machine.file + "' disagree; changing settings needs a password.\n";
    CHECK(contentOfFile(ZRKLogGetParentPath() + "/rules.log").ends_with(text));
}

TEST_CASE("a stored rule without its rules file asks for the password again from the start on")
{
    Machine machine;
    REQUIRE(machine.rule.setAllowsWithoutPassword(true).has_value());
    REQUIRE(::unlink(machine.file.c_str()) == 0);
    REQUIRE(machine.rule.takeStricter().has_value());
    CHECK_FALSE(machine.isWritten());
    CHECK(machine.storedRule() == "authenticate-admin");
}

TEST_CASE("what an interrupted write of the rules left behind goes with the next one")
{
    const Machine machine;
    const auto left = machine.root.write("rules.d/.49-com.zerkolin.brevane.rules.AbCdEf", "polkit.addRule(");
    REQUIRE(machine.rule.setAllowsWithoutPassword(true).has_value());
    CHECK(machine.isWritten());
    CHECK_FALSE(platform::fileExists(left));
    CHECK(platform::fileExists(machine.rules + "/10-other.rules"));
}

TEST_CASE("a damaged rights file is kept under another name, and the password is asked for")
{
    Machine machine;
    REQUIRE(machine.rule.setAllowsWithoutPassword(true).has_value());
    const std::string_view garbage = "garbage";
    REQUIRE(platform::replaceFile(machine.store, {reinterpret_cast<const std::uint8_t*>(garbage.data()), 7}));
    helper::installDefaultRights();
    REQUIRE(machine.rule.takeStricter().has_value());
    CHECK(platform::readFile(machine.store + ".damaged")->size() == garbage.size());
    CHECK(machine.storedRule() == "authenticate-admin");
    CHECK_FALSE(machine.isWritten());
}

TEST_CASE("a rules file that cannot be written or removed is named with the system's reason")
{
    const TemporaryDirectory folder;
    const helper::PolkitRules nowhere(folder.file("none"));
    const auto path = folder.file("none/49-com.zerkolin.brevane.rules");
    CHECK(nowhere.path() == path);
    CHECK_FALSE(nowhere.isWritten());
    const auto written = nowhere.write();
    REQUIRE_FALSE(written);
    CHECK(written.error().code == ENOENT);
    CHECK(platform::localizedDescription(written.error())
          == "'" + path + "' could not be written. No such file or directory.");
    CHECK(nowhere.remove().has_value()); // it is gone

    const helper::PolkitRules occupied(folder.path());
    REQUIRE(platform::createFolder(occupied.path()));
    const auto removed = occupied.remove();
    REQUIRE_FALSE(removed);
    CHECK(platform::localizedDescription(removed.error())
          == "'" + occupied.path() + "' could not be removed. Is a directory.");
}

TEST_CASE("the rules let administrators and root change settings, and say nothing of anything else")
{
    const TemporaryDirectory folder;
    const helper::PolkitRules rules(folder.path());
    REQUIRE(rules.write().has_value());
    const std::string group = ::getgrnam("sudo") ? "sudo" : ::getgrnam("wheel") ? "wheel" : "";
    const auto members = group.empty() ? "" : " || subject.isInGroup(\"" + group + "\")";
    CHECK(contentOfFile(rules.path())
          == "// Written by Brevane: administrators change the backup schedule without a password.\n"
             "polkit.addRule(function(action, subject) {\n"
             "    if (action.id == \"com.zerkolin.brevane.settings.modify-1\" && (subject.user == \"root\""
              + members + "))\n        return polkit.Result.YES;\n});\n");
}
