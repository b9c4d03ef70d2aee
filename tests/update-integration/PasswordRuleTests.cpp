#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/Authorization.h"
#include "protocol/ErrorCodes.h"
#include "tests/support/FileContent.h"
#include "tests/update-integration/UpdateMachine.h"

#include <doctest/doctest.h>
#include <filesystem>
#include <sys/stat.h>

namespace files = std::filesystem;
using platform::Array;
using platform::Dictionary;

namespace {

constexpr const char* ruleName = "/49-com.zerkolin.brevane.rules";

platform::ServiceReply allow(UpdateMachine& machine, bool allowed)
{
    return machine.send(BRVMessageSetAllowWithoutPassword, Dictionary{{"Allow", allowed}});
}

Array currentRule()
{
    auto definition = platform::Authorization::right(BRVRightModifySettings1);
    REQUIRE(definition.has_value());
    REQUIRE(definition->arrayForKey("rule"));
    return *definition->arrayForKey("rule");
}

} // namespace

TEST_CASE("allowing changes without a password writes the right's rule, and disallowing it writes it back")
{
    UpdateMachine machine;
    machine.start();
    CHECK(currentRule() == Array{"authenticate-admin"});
    CHECK(recordIn(allow(machine, true)).contains("Applied"));
    CHECK(currentRule() == Array{"is-admin"});
    CHECK(platform::Authorization::right(BRVRightModifySettings2) == Dictionary{{"rule", Array{"authenticate-admin"}}});
    CHECK(recordIn(allow(machine, false)).contains("Applied"));
    CHECK(currentRule() == Array{"authenticate-admin"});
    CHECK(machine.authority().calls().size() == 2);
}

TEST_CASE("where an authority reads rules, a file says the same, readable by everyone and never in parts")
{
    UpdateMachine machine;
    const auto folder = machine.file("rules");
    files::create_directories(folder);
    machine.start({}, {"--rules", folder});
    CHECK(files::is_empty(folder));
    CHECK(recordIn(allow(machine, true)).contains("Applied"));
    struct stat status{};
    REQUIRE(::stat((folder + ruleName).c_str(), &status) == 0);
    CHECK(status.st_mode == 0100644);
    const auto text = contentOfFile(folder + ruleName);
    CHECK(text.contains("action.id == \"com.zerkolin.brevane.settings.modify-1\""));
    CHECK(text.contains("polkit.Result.YES"));
    CHECK(std::distance(files::directory_iterator(folder), {}) == 1);

    const auto process = machine.helperProcess();
    CHECK(recordIn(allow(machine, true)).contains("Applied"));
    CHECK(recordIn(allow(machine, false)).contains("Applied"));
    CHECK(files::is_empty(folder));
    CHECK(machine.helperProcess() == process);
}

TEST_CASE("a rules file that cannot be written leaves the rule as it was")
{
    UpdateMachine machine;
    machine.start({}, {"--rules", machine.file("no-such-folder")});
    auto error = errorIn(allow(machine, true));
    CHECK(error.domain == platform::POSIXErrorDomain);
    CHECK(error.code == ENOENT);
    CHECK(currentRule() == Array{"authenticate-admin"});
}

TEST_CASE("a request to allow changes that says nothing, or nonsense, changes nothing")
{
    UpdateMachine machine;
    machine.start();
    checkError(machine.send(BRVMessageSetAllowWithoutPassword), ZRKMessagerErrorDomain,
               ZRKMessagerErrorDeserializeMessage);
    checkError(machine.send(BRVMessageSetAllowWithoutPassword, Dictionary()), BRVErrorDomain, BRVErrorMissingValue);
    checkError(machine.send(BRVMessageSetAllowWithoutPassword, Dictionary{{"Allow", "yes"}}), BRVErrorDomain,
               BRVErrorWrongType);
    checkError(machine.send(BRVMessageSetAllowWithoutPassword, Dictionary{{"Allow", true}, {"More", 1}}),
               BRVErrorDomain, BRVErrorUnknownKey);
    for (const auto* right : {BRVRightModifySettings1, BRVRightModifySettings2})
        machine.authority().setAnswer(right, PolkitAuthority::Answer::Denied);
    checkError(allow(machine, true), ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorValidateRights);
    CHECK(currentRule() == Array{"authenticate-admin"});
}
