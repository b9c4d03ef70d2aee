#include "messaging/ZRKAuthorizationManager.h"
#include "messaging/ZRKError.h"
#include "protocol/ErrorCodes.h"
#include "tests/messaging/Logging.h"
#include "tests/platform/ScriptedAuthorization.h"

#include <doctest/doctest.h>

namespace services = scripted::authorization;
using platform::Array;
using platform::Authorization;
using platform::Dictionary;
using services::Operation;
using Rights = ZRKAuthorizationManager::Rights;

namespace {

const std::string modify1 = "com.zerkolin.brevane.settings.modify-1";
const std::string modify2 = "com.zerkolin.brevane.settings.modify-2";
const std::string uninstall = "com.zerkolin.brevane.uninstall";
const Rights settingsPair{modify1, modify2};

std::vector<Operation> operations()
{
    std::vector<Operation> found;
    for (const auto& call : services::calls())
        found.push_back(call.operation);
    return found;
}

std::vector<std::string> copiedRights()
{
    std::vector<std::string> names;
    for (const auto& call : services::calls(Operation::CopyRight))
        names.push_back(call.name);
    return names;
}

template <class T>
void checkError(const platform::Result<T>& result, std::int64_t code, const Dictionary& userInfo)
{
    REQUIRE_FALSE(result);
    CHECK(result.error().domain == "com.zerkolin.authorization");
    CHECK(result.error().code == code);
    CHECK(result.error().userInfo == userInfo);
    CHECK_FALSE(result.error().underlying);
}

platform::Data formBytes(std::string_view sender)
{
    const auto form = services::externalFormForSender(sender);
    return platform::Data(form.begin(), form.end());
}

} // namespace

TEST_CASE("the shared manager is one object that allows interaction")
{
    CHECK(&ZRKAuthorizationManager::sharedManager() == &ZRKAuthorizationManager::sharedManager());
    CHECK(ZRKAuthorizationManager::sharedManager().allowsUserInteraction());
}

TEST_CASE("a right is asked for alone, with the prompt, extending the rights and allowing interaction")
{
    scripted::reset();
    ZRKAuthorizationManager manager;
    REQUIRE(manager.authorizeRights(settingsPair));
    CHECK(operations() == std::vector{Operation::Create, Operation::CopyRight});
    const auto call = services::calls()[1];
    CHECK(call.authorization == 1);
    CHECK(call.name == modify1);
    CHECK(call.prompt == "You must authenticate to change the product settings.");
    CHECK(call.flags == 3);
}

TEST_CASE("without interaction allowed the flags only extend the rights")
{
    scripted::reset();
    ZRKAuthorizationManager manager;
    manager.setAllowsUserInteraction(false);
    CHECK_FALSE(manager.allowsUserInteraction());
    REQUIRE(manager.authorizeRights(settingsPair));
    CHECK(services::calls(Operation::CopyRight)[0].flags == 2);
}

TEST_CASE("two requests for the same rights in a row use one authorization")
{
    scripted::reset();
    ZRKAuthorizationManager manager;
    REQUIRE(manager.authorizeRights(settingsPair));
    REQUIRE(manager.authorizeRights(settingsPair));
    CHECK(operations() == std::vector{Operation::Create, Operation::CopyRight, Operation::CopyRight});
    CHECK(services::calls()[2].authorization == 1);
}

TEST_CASE("a request for other rights frees the authorization and asks anew")
{
    scripted::reset();
    ZRKAuthorizationManager manager;
    REQUIRE(manager.authorizeRights(settingsPair));
    REQUIRE(manager.authorizeRights({uninstall}));
    CHECK(operations()
          == std::vector{Operation::Create, Operation::CopyRight, Operation::Free, Operation::Create,
                         Operation::CopyRight});
    const auto freed = services::calls()[2];
    CHECK(freed.authorization == 1);
    CHECK(freed.flags == 0);
    CHECK(services::calls()[4].authorization == 2);
    CHECK(services::calls()[4].name == uninstall);
}

TEST_CASE("the same rights in another order are other rights")
{
    scripted::reset();
    ZRKAuthorizationManager manager;
    REQUIRE(manager.authorizeRights(settingsPair));
    REQUIRE(manager.authorizeRights({modify2, modify1}));
    CHECK(services::calls(Operation::Create).size() == 2);
}

TEST_CASE("the second right is enough when the first one is denied")
{
    scripted::reset();
    services::answerCopyRight(modify1, {Authorization::Denied});
    ZRKAuthorizationManager manager;
    CHECK(manager.authorizeRights(settingsPair));
    CHECK(copiedRights() == settingsPair);
    CHECK(services::calls(Operation::Free).empty());

    // The whole list was authorized, so the same list again keeps the authorization.
    CHECK(manager.authorizeRights(settingsPair));
    CHECK(services::calls(Operation::Create).size() == 1);
}

TEST_CASE("a cancel stops the asking at once and is the user's")
{
    scripted::reset();
    services::answerCopyRight(modify1, {Authorization::Canceled});
    ZRKAuthorizationManager manager;
    const auto result = manager.authorizeRights(settingsPair);
    checkError(result, 0, {{"rights", Array{modify1, modify2}}});
    CHECK(userCanceledAuthentication(result.error()));
    CHECK(copiedRights() == Rights{modify1});
    CHECK(operations() == std::vector{Operation::Create, Operation::CopyRight, Operation::Free});
    CHECK(services::calls()[2].flags == 0);
}

TEST_CASE("a cancel at the second right is the user's too")
{
    scripted::reset();
    services::answerCopyRight(modify1, {Authorization::Denied});
    services::answerCopyRight(modify2, {Authorization::Canceled});
    ZRKAuthorizationManager manager;
    checkError(manager.authorizeRights(settingsPair), 0, {{"rights", Array{modify1, modify2}}});
}

TEST_CASE("rights that are all refused, for whatever reason, are an error that names them")
{
    for (const auto status : {Authorization::Denied, Authorization::InteractionNotAllowed, Authorization::Internal,
                              Authorization::Status(1)}) {
        scripted::reset();
        services::answerCopyRight(modify1, {status});
        services::answerCopyRight(modify2, {Authorization::Denied});
        ZRKAuthorizationManager manager;
        const auto result = manager.authorizeRights(settingsPair);
        checkError(result, 6, {{"rights", Array{modify1, modify2}}});
        CHECK_FALSE(userCanceledAuthentication(result.error()));
        CHECK(copiedRights() == settingsPair);
        CHECK(services::calls(Operation::Free).size() == 1);
        CHECK(services::calls(Operation::Free)[0].flags == 0);
    }
}

TEST_CASE("after a refusal the next request makes a new authorization")
{
    scripted::reset();
    services::answerCopyRight(uninstall, {Authorization::Denied, Authorization::Success});
    ZRKAuthorizationManager manager;
    CHECK_FALSE(manager.authorizeRights({uninstall}));
    CHECK(manager.authorizeRights({uninstall}));
    CHECK(services::calls(Operation::Create).size() == 2);
}

TEST_CASE("no rights at all cannot be authorized")
{
    scripted::reset();
    ZRKAuthorizationManager manager;
    checkError(manager.authorizeRights({}), 6, {{"rights", Array()}});
    CHECK(operations() == std::vector{Operation::Create, Operation::Free});
}

TEST_CASE("an authorization that cannot be made is told with its result code")
{
    scripted::reset();
    services::answerCreate(Authorization::Internal);
    ZRKAuthorizationManager manager;
    checkError(manager.authorizeRights(settingsPair), 1, {{"status", -60008}});
    checkError(manager.authorizationExternalDataWithRights(settingsPair), 1, {{"status", -60008}});
    CHECK(copiedRights().empty());
}

TEST_CASE("the external data are the 32 bytes of the form")
{
    scripted::reset();
    services::setExternalForm(services::externalFormForSender(":1.7"));
    ZRKAuthorizationManager manager;
    const auto data = manager.authorizationExternalDataWithRights(settingsPair);
    REQUIRE(data);
    CHECK(data->size() == 32);
    CHECK(*data == formBytes(":1.7"));
}

TEST_CASE("external data for rights that are refused fail with the refusal unchanged")
{
    scripted::reset();
    services::answerCopyRight(uninstall, {Authorization::Canceled});
    ZRKAuthorizationManager manager;
    checkError(manager.authorizationExternalDataWithRights({uninstall}), 0, {{"rights", Array{uninstall}}});
    CHECK(services::calls(Operation::MakeExternalForm).empty());
}

TEST_CASE("a form that cannot be made is told with its result code")
{
    scripted::reset();
    services::answerMakeExternalForm(Authorization::ExternalizeNotAllowed);
    ZRKAuthorizationManager manager;
    checkError(manager.authorizationExternalDataWithRights(settingsPair), 2, {{"status", -60009}});
}

TEST_CASE("after invalidate the rights are destroyed and the same rights need a new authorization")
{
    scripted::reset();
    ZRKAuthorizationManager manager;
    manager.invalidate();
    CHECK(services::calls().empty());
    REQUIRE(manager.authorizeRights(settingsPair));
    manager.invalidate();
    manager.invalidate();
    const auto freed = services::calls(Operation::Free);
    REQUIRE(freed.size() == 1);
    CHECK(freed[0].flags == 8);
    REQUIRE(manager.authorizeRights(settingsPair));
    CHECK(services::calls(Operation::Create).size() == 2);
}

TEST_CASE("a manager that goes away frees its authorization once")
{
    scripted::reset();
    {
        ZRKAuthorizationManager manager;
        REQUIRE(manager.authorizeRights(settingsPair));
    }
    REQUIRE(services::calls(Operation::Free).size() == 1);
    CHECK(services::calls(Operation::Free)[0].flags == 0);
}

TEST_CASE("a received form is valid when it holds the first right")
{
    scripted::reset();
    CHECK(ZRKAuthorizationManager::validateAuthorizationExternalData(formBytes(":1.9"), settingsPair, ":1.9"));
    CHECK(operations() == std::vector{Operation::CreateFromExternalForm, Operation::CopyRight, Operation::Free});
    const auto calls = services::calls();
    CHECK(calls[0].form == services::externalFormForSender(":1.9"));
    CHECK(calls[0].name == ":1.9");
    CHECK(calls[1].name == modify1);
    CHECK_FALSE(calls[1].prompt);
    CHECK(calls[1].flags == 0);
    CHECK(calls[2].flags == 0);
}

TEST_CASE("a received form is valid when it holds the second right only")
{
    scripted::reset();
    services::answerCopyRight(modify1, {Authorization::Denied});
    CHECK(ZRKAuthorizationManager::validateAuthorizationExternalData(formBytes(":1.9"), settingsPair));
    CHECK(copiedRights() == settingsPair);
}

TEST_CASE("a valid form that holds neither right fails with both rights and their result codes, modify-1 first")
{
    scripted::reset();
    services::answerCopyRight(modify1, {Authorization::Denied});
    services::answerCopyRight(modify2, {Authorization::InteractionNotAllowed});
    const auto result = ZRKAuthorizationManager::validateAuthorizationExternalData(formBytes(":1.9"), settingsPair);
    checkError(result, 5, {{"rights", Array{modify1 + " (-60005)", modify2 + " (-60007)"}}});
    REQUIRE(services::calls(Operation::Free).size() == 1);
    CHECK(services::calls(Operation::Free)[0].flags == 0);
}

TEST_CASE("checking a form does not stop at a cancel")
{
    scripted::reset();
    services::answerCopyRight(modify1, {Authorization::Canceled});
    CHECK(ZRKAuthorizationManager::validateAuthorizationExternalData(formBytes(":1.9"), settingsPair));
}

TEST_CASE("a form checked for no rights holds none of them")
{
    scripted::reset();
    checkError(ZRKAuthorizationManager::validateAuthorizationExternalData(formBytes(":1.9"), {}), 5,
               {{"rights", Array()}});
}

TEST_CASE("bytes that stand for no authorization are told with the result code")
{
    scripted::reset();
    services::answerCreateFromExternalForm(Authorization::InternalizeNotAllowed);
    checkError(ZRKAuthorizationManager::validateAuthorizationExternalData(formBytes(":1.9"), settingsPair), 3,
               {{"status", -60010}});
    CHECK(copiedRights().empty());
}

TEST_CASE("a form of another sender is refused before any right is looked at")
{
    scripted::reset();
    checkError(ZRKAuthorizationManager::validateAuthorizationExternalData(formBytes(":1.9"), settingsPair, ":1.10"), 3,
               {{"status", -60010}});
    CHECK(copiedRights().empty());
}

TEST_CASE("fewer than 32 bytes are no form")
{
    for (const std::size_t size : {0, 1, 31}) {
        scripted::reset();
        auto bytes = formBytes(":1.9");
        bytes.resize(size);
        checkError(ZRKAuthorizationManager::validateAuthorizationExternalData(bytes, settingsPair), 3,
                   {{"status", -60004}});
        CHECK(services::calls().empty());
    }
}

TEST_CASE("bytes after the first 32 are no part of the form")
{
    scripted::reset();
    auto bytes = formBytes(":1.9");
    bytes.resize(1000, 0xFF);
    CHECK(ZRKAuthorizationManager::validateAuthorizationExternalData(bytes, settingsPair, ":1.9"));
}

TEST_CASE("definitions of rights are written one by one on an empty authorization")
{
    scripted::reset();
    const Dictionary first{{"rule", Array{"authenticate-admin"}}};
    const Dictionary second{{"rule", Array{"is-admin"}}};
    REQUIRE(ZRKAuthorizationManager::setAuthorizationRights({{modify1, first}, {modify2, second}}));
    CHECK(operations() == std::vector{Operation::Create, Operation::SetRight, Operation::SetRight, Operation::Free});
    CHECK(services::calls()[3].flags == 0);
    CHECK(Authorization::right(modify1) == first);
    CHECK(Authorization::right(modify2) == second);
}

TEST_CASE("definitions that cannot be written are told with their result codes, and the others are written")
{
    const Logging log;
    services::answerSetRight(modify1, {Authorization::Denied});
    services::answerSetRight(uninstall, {Authorization::Internal});
    const auto result =
        ZRKAuthorizationManager::setAuthorizationRights({{modify1, {}}, {modify2, {}}, {uninstall, {}}});
    checkError(result, 4, {{"rights", Array{modify1 + " (-60005)", uninstall + " (-60008)"}}});
    CHECK(Authorization::right(modify2));
    CHECK_FALSE(Authorization::right(modify1));
    CHECK(services::calls(Operation::Free).size() == 1);
    CHECK(Logging::unified()
          == UnifiedMessages{{16, "Could not set rights: " + modify1 + " (-60005), " + uninstall + " (-60008)."}});
}

TEST_CASE("definitions for which no authorization can be made are told with the result code and all names")
{
    const Logging log;
    services::answerCreate(Authorization::Internal);
    checkError(ZRKAuthorizationManager::setAuthorizationRights({{modify1, {}}, {modify2, {}}}), 4,
               {{"status", -60008}, {"rights", Array{modify1, modify2}}});
    CHECK(Logging::unified()
          == UnifiedMessages{{16, "Could not set rights (-60008): " + modify1 + ", " + modify2 + "."}});
}

TEST_CASE("no definitions are written without complaint")
{
    scripted::reset();
    CHECK(ZRKAuthorizationManager::setAuthorizationRights({}));
}
