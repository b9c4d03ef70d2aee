#include "diagnostics/log/ZRKQueue.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "messaging/ZRKError.h"
#include "messaging/ZRKMessagerClient.h"
#include "platform/ErrorArchive.h"
#include "platform/PropertyListCoding.h"
#include "protocol/ErrorCodes.h"
#include "tests/messaging/Logging.h"
#include "tests/platform/ScriptedAuthorization.h"
#include "tests/platform/ScriptedServiceConnection.h"

#include <cerrno>
#include <cmath>
#include <doctest/doctest.h>
#include <future>
#include <thread>

namespace service = scripted::service;
namespace services = scripted::authorization;
using platform::Array;
using platform::Authorization;
using platform::Data;
using platform::Dictionary;
using platform::Error;
using platform::PropertyList;
using platform::ServiceDictionary;
using platform::ServiceError;

namespace {

constexpr const char* name = "com.zerkolin.brevane.scheduler";
const PropertyList unserializable = "\xFF\xFE";

class Delegate : public ZRKMessagerClientDelegate {
public:
    std::optional<std::vector<std::string>> rights;
    std::vector<std::int64_t> asked;

    std::optional<std::vector<std::string>> authorizationRightsForMessage(const ZRKMessagerClient&,
                                                                          std::int64_t message) override
    {
        asked.push_back(message);
        return rights;
    }
};

// A client with a delegate on a fresh platform.
struct Fixture {
    explicit Fixture(std::optional<std::vector<std::string>> rights = std::vector<std::string>(),
                     platform::OperatingSystemVersion version = {14, 0, 0})
        : log(version)
    {
        ZRKAuthorizationManager::sharedManager().invalidate();
        services::reset();
        delegate->rights = std::move(rights);
    }

    Logging log;
    std::shared_ptr<Delegate> delegate = std::make_shared<Delegate>();
    ZRKMessagerClient client{name, delegate};
};

const std::vector<std::string> oneRight{"com.zerkolin.brevane.uninstall"};

Data bytes(std::string_view text)
{
    return Data(text.begin(), text.end());
}

Data encoded(const PropertyList& value)
{
    return platform::binaryPropertyList(value).value();
}

template <class T>
const Error& checkMessagerError(const platform::Result<T>& result, std::int64_t code, const Dictionary& userInfo)
{
    REQUIRE_FALSE(result);
    CHECK(result.error().domain == "com.zerkolin.messager");
    CHECK(result.error().code == code);
    CHECK(result.error().userInfo == userInfo);
    return result.error();
}

} // namespace

TEST_CASE("the messager knows its service")
{
    Fixture it;
    CHECK(it.client.serviceName() == name);
    CHECK(service::connections().empty());
}

TEST_CASE("a request without payload and rights holds only its number")
{
    Fixture it;
    CHECK(it.client.XPCMessageForMessage(1, {}) == ServiceDictionary{{"message", std::int64_t(1)}});
    CHECK(it.delegate->asked == std::vector<std::int64_t>{1});
}

TEST_CASE("a request without payload that needs rights holds its number and the authorization")
{
    Fixture it(oneRight);
    services::setExternalForm(services::externalFormForSender(":1.5"));
    const auto request = it.client.XPCMessageForMessage(28, {});
    REQUIRE(request);
    auto form = bytes(":1.5");
    form.resize(32);
    CHECK(*request == ServiceDictionary{{"message", std::int64_t(28)}, {"auth", form}});
}

TEST_CASE("an empty dictionary is a payload like any other and travels as a binary property list")
{
    Fixture it;
    const auto request = it.client.XPCMessageForMessage(2, Dictionary());
    REQUIRE(request);
    CHECK(request->size() == 2);
    const auto payload = std::get<Data>(request->at("payload"));
    CHECK(std::string(payload.begin(), payload.begin() + 8) == "bplist00");
    CHECK(platform::propertyListWithData(payload) == PropertyList(Dictionary()));
}

TEST_CASE("a nested payload arrives as it was sent")
{
    Fixture it;
    const PropertyList payload = Dictionary{{"Mode", 1},
                                            {"Interval", Dictionary{{"Minutes", 90}}},
                                            {"On", true},
                                            {"List", Array{"a", 2.5, Data{1, 2, 3}, platform::Date{12}}}};
    service::setHandler(
        [](const ServiceDictionary& request) { return ServiceDictionary{{"payload", request.at("payload")}}; });
    CHECK(it.client.sendSynchronousMessage(2, payload) == payload);
}

TEST_CASE("a reply with values that nothing here knows arrives all the same, and so does what is sent of it")
{
    Fixture it;
    const PropertyList payload = Dictionary{{"Large", UINT64_MAX},
                                            {"Reference", platform::UID{7}},
                                            {"Dates", Array{platform::Date{NAN}, platform::Date{-INFINITY}}}};
    service::setHandler(
        [](const ServiceDictionary& request) { return ServiceDictionary{{"payload", request.at("payload")}}; });
    CHECK(it.client.sendSynchronousMessage(2, payload) == payload);
}

TEST_CASE("a payload that cannot be serialized fails before rights are asked for, and nothing is sent")
{
    Fixture it(oneRight);
    const auto result = it.client.sendSynchronousMessage(2, unserializable);
    const auto& error = checkMessagerError(result, 2, {{"message", 2}, {"payload", "\xFF\xFE"}});
    REQUIRE(error.underlying);
    CHECK(error.underlying->domain == platform::CocoaErrorDomain);
    CHECK(it.delegate->asked.empty());
    CHECK(services::calls().empty());
    CHECK(service::requests().empty());
    CHECK(service::connections().empty());
}

TEST_CASE("a payload that cannot be serialized is told by its description, not by itself")
{
    Fixture it;
    const auto result = it.client.XPCMessageForMessage(2, Array{Dictionary{{"key", unserializable}}});
    REQUIRE_FALSE(result);
    const auto* told = result.error().userInfo.find("payload");
    REQUIRE(told);
    CHECK(told->type() == PropertyList::Type::String);
    CHECK(told->string()->find("key") != std::string::npos);
}

TEST_CASE("a one-way message with a payload that cannot be serialized is not sent")
{
    Fixture it;
    checkMessagerError(it.client.sendMessage(2, unserializable), 2, {{"message", 2}, {"payload", "\xFF\xFE"}});
    CHECK(service::requests().empty());
}

TEST_CASE("a one-way message is sent without waiting for a reply, whatever becomes of it")
{
    Fixture it;
    CHECK(it.client.sendMessage(7, Dictionary{{"a", 1}}));
    REQUIRE(service::requests().size() == 1);
    CHECK(service::requests()[0].mode == service::Mode::OneWay);
    CHECK(std::get<std::int64_t>(service::requests()[0].message.at("message")) == 7);
    CHECK(Logging::unified().empty());
}

TEST_CASE("an asynchronous message that cannot be built calls its handler at once on the calling thread")
{
    Fixture it;
    const auto queue = platform::Queue::createSerial("replies");
    int calls = 0;
    it.client.sendMessage(2, unserializable, queue, [&, caller = std::this_thread::get_id()](auto reply) {
        ++calls;
        CHECK(std::this_thread::get_id() == caller);
        checkMessagerError(reply, 2, {{"message", 2}, {"payload", "\xFF\xFE"}});
    });
    CHECK(calls == 1);
    queue->sync([] { });
    CHECK(calls == 1);
    CHECK(service::requests().empty());
}

TEST_CASE("an asynchronous reply is decoded and handed over on its queue")
{
    Fixture it;
    service::answer(ServiceDictionary{{"payload", encoded("newer")}});
    service::answer(ServiceDictionary{{"error", platform::archivedError({ZRKUpdaterErrorDomain, 0, {}, nullptr})}});
    const auto queue = platform::Queue::createSerial("replies");
    for (const bool succeeds : {true, false}) {
        std::promise<ZRKMessagerClient::Reply> replied;
        std::promise<void> unblock;
        queue->async([&] { unblock.get_future().wait(); });
        it.client.sendMessage(26, {}, queue, [&](auto reply) { replied.set_value(std::move(reply)); });
        auto reply = replied.get_future();
        CHECK(reply.wait_for(std::chrono::milliseconds(10)) == std::future_status::timeout);
        unblock.set_value();
        if (succeeds)
            CHECK(reply.get() == PropertyList("newer"));
        else
            CHECK(reply.get() == std::unexpected(Error{"com.zerkolin.updater", 0, {}, nullptr}));
    }
    CHECK(service::requests()[0].mode == service::Mode::Asynchronous);
}

TEST_CASE("an asynchronous reply may come after its client is gone")
{
    const Logging log;
    service::hold();
    service::answer(ServiceDictionary());
    const auto queue = platform::Queue::createSerial("replies");
    std::promise<ZRKMessagerClient::Reply> replied;
    {
        ZRKMessagerClient client(name, {});
        client.sendMessage(26, {}, queue, [&](auto reply) { replied.set_value(std::move(reply)); });
    }
    service::release();
    checkMessagerError(replied.get_future().get(), 7, {{"message", 26}, {"service", name}});
}

TEST_CASE("no delegate, none any more, none for the number and no rights all mean no authorization")
{
    Fixture it(std::nullopt);
    const ServiceDictionary plain{{"message", std::int64_t(28)}};
    CHECK(it.client.XPCMessageForMessage(28, {}) == plain);
    CHECK(it.delegate->asked.size() == 1);
    it.delegate->rights = std::vector<std::string>();
    CHECK(it.client.XPCMessageForMessage(28, {}) == plain);
    it.delegate->rights = oneRight;
    it.delegate.reset();
    CHECK(it.client.XPCMessageForMessage(28, {}) == plain);
    CHECK(ZRKMessagerClient(name, {}).XPCMessageForMessage(28, {}) == plain);
    CHECK(services::calls().empty());
}

TEST_CASE("when the user cancels the authentication nothing is sent and the error says so")
{
    Fixture it(oneRight);
    services::answerCopyRight(oneRight[0], {Authorization::Canceled});
    const auto result = it.client.sendSynchronousMessage(2, Dictionary());
    const auto& error = checkMessagerError(result, 0, {{"message", 2}});
    CHECK(userCanceledAuthentication(error));
    CHECK(service::requests().empty());
    CHECK(Logging::unified()
          == UnifiedMessages{{1, "User canceled authentication."},
                             {16, "Could not authorize message (2). User canceled authentication."}});
}

TEST_CASE("when the authorization is refused nothing is sent and the refusal is wrapped")
{
    Fixture it(oneRight);
    services::answerCopyRight(oneRight[0], {Authorization::Denied});
    const auto result = it.client.sendSynchronousMessage(28, {});
    const auto& error = checkMessagerError(result, 0, {{"message", 28}});
    REQUIRE(error.underlying);
    CHECK(error.underlying->domain == ZRKAuthorizationErrorDomain);
    CHECK(error.underlying->code == 6);
    CHECK_FALSE(userCanceledAuthentication(error));
    CHECK(service::requests().empty());
}

TEST_CASE("a service that goes away while its reply is awaited is told as disappeared")
{
    Fixture it;
    service::hold();
    auto waiting = std::async(std::launch::async, [&] { return it.client.sendSynchronousMessage(2, {}); });
    REQUIRE(service::waitForRequests(1));
    service::interrupt();
    checkMessagerError(waiting.get(), 8, {{"message", 2}, {"service", name}});
}

TEST_CASE("a service that does not exist is told as unavailable, each time on a new connection")
{
    Fixture it;
    checkMessagerError(it.client.sendSynchronousMessage(1, {}), 7, {{"message", 1}, {"service", name}});
    checkMessagerError(it.client.sendSynchronousMessage(1, {}), 7, {{"message", 1}, {"service", name}});
    CHECK(service::connections().size() == 2);
    service::answer(ServiceDictionary());
    CHECK(it.client.sendSynchronousMessage(1, {}) == PropertyList(Dictionary()));
    CHECK(service::connections().size() == 3);
    const std::string text =
        "Could not send message (1), the service is not available (com.zerkolin.brevane.scheduler).";
    REQUIRE(Logging::unified().size() == 4); // with those of the two connections
    CHECK(Logging::unified()[1] == std::pair(0, text));
}

TEST_CASE("after the service crashed the next message reaches it on the same connection")
{
    Fixture it;
    service::answer(std::unexpected(ServiceError::Interrupted));
    service::answer(ServiceDictionary());
    checkMessagerError(it.client.sendSynchronousMessage(1, {}), 8, {{"message", 1}, {"service", name}});
    CHECK(it.client.sendSynchronousMessage(1, {}));
    CHECK(service::connections().size() == 1);
}

TEST_CASE("a reply with neither key is a success with an empty dictionary")
{
    Fixture it;
    CHECK(it.client.replyForMessage(2, ServiceDictionary()) == PropertyList(Dictionary()));
    CHECK(it.client.replyForMessage(2, ServiceDictionary{{"other", std::int64_t(1)}}) == PropertyList(Dictionary()));
}

TEST_CASE("a reply with numbers where bytes belong counts as one without them")
{
    Fixture it;
    const ServiceDictionary reply{{"error", std::int64_t(1)}, {"payload", std::int64_t(2)}};
    CHECK(it.client.replyForMessage(2, reply) == PropertyList(Dictionary()));
}

TEST_CASE("a reply's error is passed on unchanged with all that it holds, and is not logged")
{
    Fixture it;
    Error error{BRVErrorDomain, 4, {{"key", "Minutes"}, {"expected", "number"}}, nullptr};
    error.underlying = std::make_shared<const Error>(
        Error{"NSPOSIXErrorDomain",
              28,
              {{"path", "/a"}},
              std::make_shared<const Error>(Error{"com.example", -3, {{"list", Array{1, "two"}}}, nullptr})});
    const ServiceDictionary reply{{"error", platform::archivedError(error)}};
    CHECK(it.client.replyForMessage(2, reply) == std::unexpected(error));
    CHECK(it.client.errorForMessage(2, reply) == error);
    CHECK(scripted::log::messages().empty());
    CHECK(it.log.fileTexts().empty());
}

TEST_CASE("a reply with both an error and a payload fails with the error")
{
    Fixture it;
    const Error error{BRVErrorDomain, 0, {}, nullptr};
    const ServiceDictionary reply{{"error", platform::archivedError(error)}, {"payload", encoded(1)}};
    CHECK(it.client.replyForMessage(2, reply) == std::unexpected(error));
}

TEST_CASE("a reply's payload is read in every property-list format")
{
    Fixture it;
    const PropertyList expected = Dictionary{{"Enabled", "yes"}};
    const Data formats[] = {encoded(expected),
                            bytes("<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                                  "<key>Enabled</key><string>yes</string></dict></plist>"),
                            bytes("{ Enabled = yes; }")};
    for (const auto& format : formats)
        CHECK(it.client.replyForMessage(18, ServiceDictionary{{"payload", format}}) == expected);
}

TEST_CASE("a damaged payload is told with the reader's error")
{
    Fixture it;
    const auto whole = encoded(Dictionary{{"Enabled", true}, {"List", Array{1, 2, 3}}});
    for (std::size_t size = 9; size < whole.size(); ++size) { // up to there it reads as old-style text
        CAPTURE(size);
        const Data cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const auto result = it.client.replyForMessage(18, ServiceDictionary{{"payload", cut}});
        const auto& error = checkMessagerError(result, 5, {{"message", 18}});
        REQUIRE(error.underlying);
        CHECK(error.underlying->domain == platform::CocoaErrorDomain);
    }
}

TEST_CASE("any damaged byte of a payload gives a value or the error for it")
{
    Fixture it;
    const auto whole = encoded(Dictionary{{"Enabled", true}, {"List", Array{1, 2, 3}}});
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (const std::uint8_t flip : {0x01, 0x80, 0xFF}) {
            auto damaged = whole;
            damaged[place] ^= flip;
            const auto reply = it.client.replyForMessage(18, ServiceDictionary{{"payload", damaged}});
            CHECK((reply || reply.error().code == ZRKMessagerErrorDeserializeReply));
        }
    }
}

TEST_CASE("a damaged error is told with the reader's error")
{
    Fixture it;
    const auto whole = platform::archivedError({BRVErrorDomain, 3, {{"key", "Mode"}}, nullptr});
    std::vector<Data> damaged{{}, bytes("not an archive"), encoded(Dictionary{{"NSCode", 3}})};
    for (std::size_t size = 1; size < whole.size(); ++size)
        damaged.emplace_back(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    for (const auto& each : damaged) {
        CAPTURE(each.size());
        const ServiceDictionary reply{{"error", each}, {"payload", encoded(1)}};
        const auto result = it.client.replyForMessage(2, reply);
        const auto& error = checkMessagerError(result, 6, {{"message", 2}});
        REQUIRE(error.underlying);
        CHECK(error.underlying->domain == platform::CocoaErrorDomain);
    }
}

TEST_CASE("any damaged byte of an error gives an error all the same")
{
    Fixture it;
    const auto whole = platform::archivedError(
        {BRVErrorDomain, 3, {{"key", "Mode"}}, std::make_shared<const Error>(Error{"com.example", 1, {}, nullptr})});
    for (std::size_t place = 0; place < whole.size(); ++place) {
        for (const std::uint8_t flip : {0x01, 0x80, 0xFF}) {
            auto damaged = whole;
            damaged[place] ^= flip;
            CHECK_FALSE(it.client.replyForMessage(2, ServiceDictionary{{"error", damaged}}));
        }
    }
}

TEST_CASE("before 10.13 an error that cannot be read counts as none")
{
    Fixture it(std::nullopt, {10, 12, 6});
    const ServiceDictionary reply{{"error", bytes("not an archive")}, {"payload", encoded("result")}};
    CHECK_FALSE(it.client.errorForMessage(2, reply));
    CHECK(it.client.replyForMessage(2, reply) == PropertyList("result"));
    CHECK(it.client.replyForMessage(2, ServiceDictionary{{"error", Data()}}) == PropertyList(Dictionary()));
    CHECK(Logging::unified().empty());
}

TEST_CASE("before 10.13 an error that can be read is passed on")
{
    Fixture it(std::nullopt, {10, 12, 6});
    const Error error{BRVErrorDomain, 2, {}, nullptr};
    CHECK(it.client.replyForMessage(2, ServiceDictionary{{"error", platform::archivedError(error)}})
          == std::unexpected(error));
}

TEST_CASE("from 10.13 on an error that cannot be read is an error of its own")
{
    Fixture it(std::nullopt, {10, 13, 0});
    checkMessagerError(it.client.replyForMessage(2, ServiceDictionary{{"error", bytes("no")}}), 6, {{"message", 2}});
}

TEST_CASE("every messager error that is made is logged once")
{
    Fixture it;
    const auto logged = [&] { return it.log.fileTexts().size(); };
    CHECK_FALSE(it.client.replyForMessage(1, std::unexpected(ServiceError::Invalid)));
    CHECK(logged() == 1);
    CHECK_FALSE(it.client.replyForMessage(1, std::unexpected(ServiceError::Interrupted)));
    CHECK(logged() == 2);
    CHECK_FALSE(it.client.replyForMessage(1, ServiceDictionary{{"error", bytes("no")}}));
    CHECK(logged() == 3);
    CHECK_FALSE(it.client.replyForMessage(1, ServiceDictionary{{"payload", bytes("{")}}));
    CHECK(logged() == 4);
    REQUIRE(Logging::unified().size() == 4);
    CHECK(Logging::unified()[0].first == 0);
    CHECK(Logging::unified()[1].first == 0);
    CHECK(Logging::unified()[2].first == 16);
    CHECK(Logging::unified()[3].first == 16);
}

TEST_CASE("after a cancel the next message travels on a new connection")
{
    Fixture it;
    service::setHandler([](const ServiceDictionary&) { return ServiceDictionary(); });
    it.client.cancel();
    CHECK(it.client.sendSynchronousMessage(1, {}));
    it.client.cancel();
    CHECK(it.client.sendSynchronousMessage(1, {}));
    CHECK(service::connections().size() == 2);
}

TEST_CASE("two threads that send at once each get their own reply over one connection")
{
    Fixture it;
    it.delegate.reset();
    service::setHandler(
        [](const ServiceDictionary& request) { return ServiceDictionary{{"payload", request.at("payload")}}; });
    const auto send = [&](int thread) {
        bool right = true;
        for (int number = 0; number < 200; ++number) {
            const PropertyList payload = Array{thread, number};
            right = right && it.client.sendSynchronousMessage(1, payload) == payload;
        }
        return right;
    };
    auto other = std::async(std::launch::async, send, 1);
    CHECK(send(2));
    CHECK(other.get());
    CHECK(service::connections().size() == 1);
    CHECK(service::requests().size() == 400);
}

TEST_CASE("a negative or huge message number travels as it is")
{
    Fixture it;
    for (const auto number : {std::int64_t(-1), std::numeric_limits<std::int64_t>::max()})
        CHECK(it.client.XPCMessageForMessage(number, {}) == ServiceDictionary{{"message", number}});
}

TEST_CASE(
    "a request that the transport would not carry could not be serialized, and one that was refused found no service")
{
    Fixture it;
    const auto tooLarge = it.client.replyForMessage(2, std::unexpected(ServiceError::TooLarge));
    REQUIRE_FALSE(tooLarge);
    CHECK(tooLarge.error().domain == ZRKMessagerErrorDomain);
    CHECK(tooLarge.error().code == ZRKMessagerErrorSerializeMessage);
    REQUIRE(tooLarge.error().underlying);
    CHECK(tooLarge.error().underlying->domain == platform::POSIXErrorDomain);
    CHECK(tooLarge.error().underlying->code == EMSGSIZE);
    const auto refused = it.client.replyForMessage(2, std::unexpected(ServiceError::Refused));
    REQUIRE_FALSE(refused);
    CHECK(refused.error().code == ZRKMessagerErrorServiceUnavailable);
}
