#include "diagnostics/log/ZRKQueue.h"
#include "messaging/ZRKXPCClient.h"
#include "tests/messaging/Logging.h"
#include "tests/platform/ScriptedServiceConnection.h"

#include <atomic>
#include <doctest/doctest.h>
#include <future>
#include <thread>

namespace service = scripted::service;
using platform::ServiceDictionary;
using platform::ServiceError;

namespace {

constexpr const char* name = "com.zerkolin.brevane.scheduler";

ServiceDictionary numbered(std::int64_t number)
{
    return {{"message", number}};
}

// Returns when the events so far have been heard.
void settle()
{
    ZRKQueueMain()->sync([] { });
}

void answerEverything()
{
    service::setHandler([](const ServiceDictionary& message) { return message; });
}

} // namespace

TEST_CASE("a new client knows its service and makes no connection")
{
    scripted::reset();
    const ZRKXPCClient client(name);
    CHECK(client.serviceName() == name);
    CHECK(service::connections().empty());
}

TEST_CASE("the first send makes exactly one connection and later sends use it")
{
    scripted::reset();
    answerEverything();
    ZRKXPCClient client(name);
    CHECK(client.sendSynchronousXPCMessage(numbered(1)) == numbered(1));
    client.sendXPCMessage(numbered(2));
    CHECK(client.sendSynchronousXPCMessage(numbered(3)) == numbered(3));
    REQUIRE(service::connections().size() == 1);
    REQUIRE(service::requests().size() == 3);
    CHECK(service::requests()[1].mode == service::Mode::OneWay);
    CHECK(service::requests()[1].message == numbered(2));
}

TEST_CASE("the connection is privileged, resumed, and tells its events on the shared work queue")
{
    scripted::reset();
    ZRKXPCClient client(name);
    client.connection();
    REQUIRE(service::connections().size() == 1);
    const auto made = service::connections()[0];
    CHECK(made.serviceName == name);
    CHECK(made.flags == 2);
    CHECK(made.target == ZRKQueueMain());
    CHECK(made.target->label() == "com.zerkolin.main");
    CHECK(made.resumed);
}

TEST_CASE("an asynchronous reply arrives on the queue that was asked for")
{
    scripted::reset();
    answerEverything();
    ZRKXPCClient client(name);
    const auto queue = platform::Queue::createSerial("replies");
    std::atomic<bool> queueIsBlocked = true;
    std::promise<void> unblock;
    std::promise<platform::ServiceReply> replied;
    queue->async([&] {
        unblock.get_future().wait();
        queueIsBlocked = false;
    });
    client.sendXPCMessage(numbered(4), queue, [&](platform::ServiceReply reply) {
        CHECK_FALSE(queueIsBlocked);
        replied.set_value(std::move(reply));
    });
    unblock.set_value();
    CHECK(replied.get_future().get() == numbered(4));
}

TEST_CASE("two sends from two threads at once make one connection")
{
    scripted::reset();
    answerEverything();
    for (int round = 0; round < 200; ++round) {
        service::reset();
        answerEverything();
        ZRKXPCClient client(name);
        std::atomic<int> ready = 0;
        const auto sendWhenBothAreReady = [&](std::int64_t number) {
            ++ready;
            while (ready < 2) { }
            return client.sendSynchronousXPCMessage(numbered(number)) == numbered(number);
        };
        bool othersReply = false;
        std::thread other([&] { othersReply = sendWhenBothAreReady(1); });
        const bool reply = sendWhenBothAreReady(2);
        other.join();
        REQUIRE(reply);
        REQUIRE(othersReply);
        REQUIRE(service::connections().size() == 1);
    }
}

TEST_CASE("cancel without a connection does nothing")
{
    const Logging log;
    ZRKXPCClient client(name);
    client.cancel();
    settle();
    CHECK(service::connections().empty());
    CHECK(scripted::log::messages().empty());
}

TEST_CASE("after a cancel the next send makes a new connection")
{
    scripted::reset();
    answerEverything();
    ZRKXPCClient client(name);
    REQUIRE(client.sendSynchronousXPCMessage(numbered(1)));
    client.cancel();
    CHECK(service::connections()[0].canceled);
    CHECK(client.sendSynchronousXPCMessage(numbered(2)) == numbered(2));
    CHECK(service::connections().size() == 2);
    CHECK_FALSE(service::connections()[1].canceled);
}

TEST_CASE("a cancel fails the request that waits for its reply as invalid")
{
    scripted::reset();
    service::hold();
    ZRKXPCClient client(name);
    auto waiting = std::async(std::launch::async, [&] { return client.sendSynchronousXPCMessage(numbered(1)); });
    REQUIRE(service::waitForRequests(1));
    client.cancel();
    CHECK(waiting.get() == std::unexpected(ServiceError::Invalid));
}

TEST_CASE("after the connection became invalid the next send makes a new one")
{
    const Logging log;
    answerEverything();
    ZRKXPCClient client(name);
    REQUIRE(client.sendSynchronousXPCMessage(numbered(1)));
    service::invalidate();
    CHECK(client.sendSynchronousXPCMessage(numbered(2)) == numbered(2));
    CHECK(service::connections().size() == 2);
    CHECK_FALSE(service::connections()[0].canceled);
    CHECK(Logging::unified() == UnifiedMessages{{16, "Connection became invalid with server."}});
    CHECK(log.fileTexts() == Texts{"Connection became invalid with server."});
}

TEST_CASE("after the connection was interrupted the next send uses it again")
{
    const Logging log;
    answerEverything();
    ZRKXPCClient client(name);
    REQUIRE(client.sendSynchronousXPCMessage(numbered(1)));
    service::interrupt();
    CHECK(client.sendSynchronousXPCMessage(numbered(2)) == numbered(2));
    CHECK(service::connections().size() == 1);
    CHECK(Logging::unified() == UnifiedMessages{{2, "Connection interrupted with server."}});
    CHECK(log.fileTexts() == Texts{"Connection interrupted with server."});
}

TEST_CASE("before 10.12 an invalid connection is told to the legacy log and the file, an interrupted one to the file")
{
    const Logging log({10, 11, 0});
    ZRKXPCClient client(name);
    client.connection();
    service::interrupt();
    CHECK(Logging::legacy().empty());
    CHECK(log.fileTexts() == Texts{"Connection interrupted with server."});
    service::invalidate();
    CHECK(Logging::legacy() == LegacyMessages{{"Error", "Connection became invalid with server."}});
    CHECK(log.fileTexts() == Texts{"Connection interrupted with server.", "Connection became invalid with server."});
    CHECK(Logging::unified().empty());
}

TEST_CASE("a request that waits is failed as interrupted when the service goes away")
{
    scripted::reset();
    service::hold();
    ZRKXPCClient client(name);
    auto waiting = std::async(std::launch::async, [&] { return client.sendSynchronousXPCMessage(numbered(1)); });
    REQUIRE(service::waitForRequests(1));
    service::interrupt();
    CHECK(waiting.get() == std::unexpected(ServiceError::Interrupted));
}

TEST_CASE("an old connection that became invalid does not cost the newer one that was made meanwhile")
{
    scripted::reset();
    ZRKXPCClient client(name);
    const auto old = client.connection();
    std::promise<void> unblock;
    ZRKQueueMain()->async([&] { unblock.get_future().wait(); });
    client.cancel(); // its event now waits on the work queue
    const auto newer = client.connection();
    CHECK(newer != old);
    unblock.set_value();
    settle();
    CHECK(client.connection() == newer);
    CHECK(service::connections().size() == 2);
}

TEST_CASE("making and canceling connections does not wait for the work queue")
{
    scripted::reset();
    answerEverything();
    ZRKXPCClient client(name);
    std::promise<void> unblock;
    ZRKQueueMain()->async([&] { unblock.get_future().wait(); });
    CHECK(client.sendSynchronousXPCMessage(numbered(1)) == numbered(1));
    client.cancel();
    CHECK(client.sendSynchronousXPCMessage(numbered(2)) == numbered(2));
    unblock.set_value();
    settle();
}

TEST_CASE("an event that comes after the client is gone is ignored")
{
    const Logging log;
    std::shared_ptr<platform::ServiceConnection> connection;
    {
        ZRKXPCClient client(name);
        connection = client.connection();
    }
    service::interrupt();
    service::invalidate();
    CHECK(scripted::log::messages().empty());
}

TEST_CASE("threads may send and cancel while the service comes and goes")
{
    scripted::reset();
    answerEverything();
    ZRKXPCClient client(name);
    std::atomic<bool> stop = false;
    std::atomic<int> replies = 0;
    const auto send = [&](std::int64_t number) {
        while (!stop) {
            const auto reply = client.sendSynchronousXPCMessage(numbered(number));
            if (reply == numbered(number))
                ++replies;
            else
                CHECK(reply == std::unexpected(ServiceError::Invalid));
        }
    };
    std::thread first(send, 1);
    std::thread second(send, 2);
    for (int round = 0; round < 100; ++round) {
        service::interrupt();
        service::invalidate();
        client.cancel();
    }
    while (replies < 2)
        std::this_thread::yield();
    stop = true;
    first.join();
    second.join();
    settle();
    CHECK(client.sendSynchronousXPCMessage(numbered(3)) == numbered(3));
}
