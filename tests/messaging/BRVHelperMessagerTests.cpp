#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "messaging/ZRKError.h"
#include "platform/ErrorArchive.h"
#include "platform/PropertyListCoding.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedPlatform.h"
#include "tests/platform/ScriptedServiceConnection.h"

#include <doctest/doctest.h>
#include <future>
#include <limits>
#include <utility>

namespace service = scripted::service;
namespace services = scripted::authorization;
using platform::Authorization;
using platform::Dictionary;
using platform::PropertyList;
using platform::ServiceDictionary;
using services::Operation;

namespace {

const std::vector<std::string> noRights;
const std::vector<std::string> settingsPair{"com.zerkolin.brevane.settings.modify-1",
                                            "com.zerkolin.brevane.settings.modify-2"};
const std::vector<std::string> uninstallRight{"com.zerkolin.brevane.uninstall"};

std::shared_ptr<BRVHelperMessager> freshMessager()
{
    scripted::reset();
    ZRKAuthorizationManager::sharedManager().invalidate();
    services::reset();
    service::setHandler([](const ServiceDictionary&) { return ServiceDictionary(); });
    return BRVHelperMessager::create();
}

using Outcome = platform::Result<Dictionary>;

// What the handler of a message is given, which `send` sends with it.
template <class Send>
Outcome outcomeOf(Send send)
{
    std::promise<Outcome> replied;
    send(platform::Queue::createSerial("replies"), [&](Outcome outcome) { replied.set_value(std::move(outcome)); });
    return replied.get_future().get();
}

ServiceDictionary replyWith(const PropertyList& payload)
{
    return {{"payload", platform::binaryPropertyList(payload).value()}};
}

} // namespace

TEST_CASE("every message number from 0 to 28 needs exactly its rights")
{
    const auto check = [](std::initializer_list<std::int64_t> numbers, const std::vector<std::string>& rights) {
        for (const auto number : numbers) {
            CAPTURE(number);
            CHECK(BRVAuthorizationRightsForMessage(number) == rights);
        }
        return numbers.size();
    };
    const auto count = check({0, 1, 5, 7, 8, 9, 10, 15, 16, 18, 19, 20, 24, 26}, noRights)
        + check({2, 3, 4, 6, 11, 12, 13, 14, 17, 21, 22, 23, 25, 27}, settingsPair) + check({28}, uninstallRight);
    CHECK(count == 29);
}

TEST_CASE("a number outside the protocol has no rights list and is not authorized")
{
    const auto messager = freshMessager();
    for (const std::int64_t number :
         {std::int64_t(29), std::int64_t(-1), std::int64_t(256), std::numeric_limits<std::int64_t>::max(),
          std::numeric_limits<std::int64_t>::min()}) {
        CAPTURE(number);
        CHECK_FALSE(BRVAuthorizationRightsForMessage(number));
        CHECK_FALSE(messager->requiresAuthorizationForMessage(number));
    }
}

TEST_CASE("the messages that read need no authorization and those that change need one")
{
    const auto messager = freshMessager();
    for (const auto number : {BRVMessageGetSettings, BRVMessageGetAutoUpdates, BRVMessageCheckForUpdates})
        CHECK_FALSE(messager->requiresAuthorizationForMessage(number));
    for (const auto number : {BRVMessageApplySettings, BRVMessageSetAllowWithoutPassword, BRVMessageSetAutoUpdates,
                              BRVMessageInstallUpdate, BRVMessageUninstall})
        CHECK(messager->requiresAuthorizationForMessage(number));
}

TEST_CASE("the messages have their numbers")
{
    CHECK(BRVMessageGetSettings == 1);
    CHECK(BRVMessageApplySettings == 2);
    CHECK(BRVMessageSetAllowWithoutPassword == 6);
    CHECK(BRVMessageGetAutoUpdates == 18);
    CHECK(BRVMessageSetAutoUpdates == 21);
    CHECK(BRVMessageCheckForUpdates == 26);
    CHECK(BRVMessageInstallUpdate == 27);
    CHECK(BRVMessageUninstall == 28);
}

TEST_CASE("the delegate names two rights for installing an update, modify-1 first, and one for uninstalling")
{
    const auto messager = freshMessager();
    const ZRKMessagerClient client("any", messager);
    CHECK(messager->authorizationRightsForMessage(client, 27) == settingsPair);
    CHECK(messager->authorizationRightsForMessage(client, 28) == uninstallRight);
    CHECK(messager->authorizationRightsForMessage(client, 1) == noRights);
}

TEST_CASE("the shared messager is one object, and making it makes no connection")
{
    scripted::reset();
    CHECK(BRVHelperMessager::sharedMessager() == BRVHelperMessager::sharedMessager());
    CHECK(service::connections().empty());
}

TEST_CASE("messages go to the scheduler's service")
{
    const auto messager = freshMessager();
    CHECK(messager->sendSynchronousMessage(BRVMessageGetSettings) == PropertyList(Dictionary()));
    REQUIRE(service::connections().size() == 1);
    CHECK(service::connections()[0].serviceName == "com.zerkolin.brevane.scheduler");
    CHECK(service::requests()[0].message == ServiceDictionary{{"message", std::int64_t(1)}});
    CHECK(services::calls().empty());
}

TEST_CASE("a change carries the authorization for the settings pair, and the user is asked once")
{
    const auto messager = freshMessager();
    CHECK(messager->sendSynchronousMessage(BRVMessageApplySettings, Dictionary{{"Minutes", 90}}));
    CHECK(messager->sendSynchronousMessage(BRVMessageSetAutoUpdates, Dictionary{{"Enabled", true}}));
    CHECK(services::calls(Operation::Create).size() == 1);
    CHECK(services::calls(Operation::CopyRight)[0].name == settingsPair[0]);
    REQUIRE(service::requests().size() == 2);
    for (const auto& request : service::requests()) {
        CHECK(request.message.size() == 3);
        CHECK(std::get<platform::Data>(request.message.at("auth")).size() == 32);
    }
}

TEST_CASE("the uninstallation after a change asks for its own right anew")
{
    const auto messager = freshMessager();
    CHECK(messager->sendSynchronousMessage(BRVMessageApplySettings, Dictionary()));
    std::promise<BRVHelperMessager::Reply> replied;
    messager->sendMessage(BRVMessageUninstall, {}, platform::Queue::createSerial("replies"),
                          [&](auto reply) { replied.set_value(std::move(reply)); });
    CHECK(replied.get_future().get());
    const auto asked = services::calls(Operation::CopyRight);
    REQUIRE(asked.size() == 2);
    CHECK(asked[1].name == uninstallRight[0]);
    CHECK(asked[1].authorization == 2);
    CHECK(services::calls(Operation::Free).size() == 1);
}

TEST_CASE("a change whose authentication the user cancels is not sent")
{
    const auto messager = freshMessager();
    services::answerCopyRight(settingsPair[0], {Authorization::Canceled});
    const auto reply = messager->sendSynchronousMessage(BRVMessageSetAutoUpdates, Dictionary{{"Enabled", true}});
    REQUIRE_FALSE(reply);
    CHECK(userCanceledAuthentication(reply.error()));
    CHECK(service::requests().empty());
}

TEST_CASE("a one-way message and a cancel are forwarded")
{
    const auto messager = freshMessager();
    CHECK(messager->sendMessage(BRVMessageGetSettings));
    messager->cancel();
    CHECK(service::requests()[0].mode == service::Mode::OneWay);
    CHECK(service::connections()[0].canceled);
}

TEST_CASE("the status and the backup program are asked for by their numbers, without payload or authorization")
{
    const auto messager = freshMessager();
    service::answer(replyWith(Dictionary{{"State", "off"}}));
    service::answer(replyWith(Dictionary{{"Program", "borg"}}));
    CHECK(outcomeOf([&](auto queue, auto handler) { messager->getStatus(queue, handler); })
          == Dictionary{{"State", "off"}});
    CHECK(outcomeOf([&](auto queue, auto handler) { messager->getBackupProgram(queue, handler); })
          == Dictionary{{"Program", "borg"}});
    REQUIRE(service::requests().size() == 2);
    CHECK(service::requests()[0].message == ServiceDictionary{{"message", std::int64_t(5)}});
    CHECK(service::requests()[1].message == ServiceDictionary{{"message", std::int64_t(7)}});
    CHECK(services::calls().empty());
}

TEST_CASE("a backup is started with the authorization for the settings pair and no payload")
{
    const auto messager = freshMessager();
    CHECK(outcomeOf([&](auto queue, auto handler) { messager->startBackup(queue, handler); }) == Dictionary());
    REQUIRE(service::requests().size() == 1);
    const auto sent = service::requests()[0].message;
    CHECK(sent.size() == 2);
    CHECK(std::get<std::int64_t>(sent.at("message")) == 3);
    CHECK(sent.contains("auth"));
    CHECK(services::calls(Operation::CopyRight)[0].name == settingsPair[0]);
}

TEST_CASE("the chosen backup program is sent with the authorization for the settings pair")
{
    const auto messager = freshMessager();
    const Dictionary choice{{"Program", "borg"}, {"Fields", Dictionary{{"Destination", "/srv/backups"}}}};
    CHECK(outcomeOf([&](auto queue, auto handler) { messager->setBackupProgram(choice, queue, handler); }));
    REQUIRE(service::requests().size() == 1);
    const auto sent = service::requests()[0].message;
    CHECK(sent.size() == 3);
    CHECK(std::get<std::int64_t>(sent.at("message")) == 12);
    CHECK(platform::propertyListWithData(std::get<platform::Data>(sent.at("payload"))) == PropertyList(choice));
}

TEST_CASE("a backup whose authentication the user cancels is not started, and the handler hears it")
{
    const auto messager = freshMessager();
    services::answerCopyRight(settingsPair[0], {Authorization::Canceled});
    const auto outcome = outcomeOf([&](auto queue, auto handler) { messager->startBackup(queue, handler); });
    REQUIRE_FALSE(outcome);
    CHECK(userCanceledAuthentication(outcome.error()));
    CHECK(service::requests().empty());
}

TEST_CASE("a reply about backups that is no dictionary is an error of the reply")
{
    const auto messager = freshMessager();
    service::answer(replyWith(PropertyList("waiting")));
    const auto outcome = outcomeOf([&](auto queue, auto handler) { messager->getStatus(queue, handler); });
    REQUIRE_FALSE(outcome);
    CHECK(outcome.error().domain == "com.zerkolin.messager");
    CHECK(outcome.error().code == 5);
    CHECK_FALSE(helperDoesNotServeMessage(outcome.error()));
}

TEST_CASE("a helper that does not serve a message is told from one that is not there")
{
    const auto messager = freshMessager();
    const platform::Error refusal{"com.zerkolin.messager", 3, {{"message", 5}}, nullptr};
    service::answer(ServiceDictionary{{"error", platform::archivedError(refusal)}});
    service::answer(std::unexpected(platform::ServiceError::Invalid));
    const auto ask = [&] { return outcomeOf([&](auto queue, auto handler) { messager->getStatus(queue, handler); }); };
    const auto older = ask();
    REQUIRE_FALSE(older);
    CHECK(helperDoesNotServeMessage(older.error()));
    const auto none = ask();
    REQUIRE_FALSE(none);
    CHECK_FALSE(helperDoesNotServeMessage(none.error()));
    CHECK(none.error().code == 7);
}
