#include "tests/integration/TestService.h"
#include "tests/support/PrivateBus.h"

#include <atomic>
#include <doctest/doctest.h>
#include <thread>

using platform::Queue;
using platform::ServiceError;
using platform::ServiceReply;

namespace {

using Events = std::vector<ServiceError>;
using Replies = Arrivals<ServiceReply>;

const Events Interruption = {ServiceError::Interrupted};
const Events Invalidity = {ServiceError::Invalid};
const ServiceReply Interrupted = std::unexpected(ServiceError::Interrupted);
const ServiceReply Invalid = std::unexpected(ServiceError::Invalid);

platform::ServiceConnection::ReplyHandler recordIn(const std::shared_ptr<Replies>& replies)
{
    return [replies](ServiceReply reply) { replies->add(std::move(reply)); };
}

// Asks the peer for something small; tells whether it answered.
bool answers(platform::ServiceConnection& connection)
{
    const ServiceReply reply = connection.sendSynchronously({{"message", 1}, {"size", 3}});
    return reply && dataIn(*reply, "payload") == platform::Data(3, 0x5A);
}

// Waits until the peer holds a request that it won't answer.
void waitUntilAsked(platform::ServiceConnection& other)
{
    CHECK(answers(other));
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

} // namespace

TEST_CASE("a message and its reply travel with integers and bytes")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    const ServiceReply reply = recorded.connection->sendSynchronously({{"message", 1}, {"size", 1024}});
    REQUIRE(reply);
    CHECK(dataIn(*reply, "payload") == platform::Data(1024, 0x5A));
    CHECK(textIn(*reply, "sender").starts_with(":1."));
    CHECK(recorded.settledEvents().empty());
}

TEST_CASE("an empty payload arrives as a payload")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    const ServiceReply reply = recorded.connection->sendSynchronously({{"message", 7}, {"payload", platform::Data()}});
    REQUIRE(reply);
    CHECK(integerIn(*reply, "size") == 0);
    CHECK(integerIn(*reply, "entries") == 2);
}

TEST_CASE("without a service a send is answered with invalid and the event is told once")
{
    PrivateBus bus;
    RecordedConnection recorded;
    CHECK(recorded.connection->sendSynchronously({{"message", 1}}) == Invalid);
    CHECK(recorded.connection->sendSynchronously({{"message", 1}}) == Invalid);
    const auto replies = std::make_shared<Replies>();
    recorded.connection->send({{"message", 1}}, Queue::global(), recordIn(replies));
    CHECK(replies->waitFor(1) == std::vector{Invalid});
    CHECK(recorded.settledEvents() == Invalidity);

    const auto service = startTestService();
    RecordedConnection later;
    CHECK(answers(*later.connection));
}

TEST_CASE("without a bus a send is answered with invalid")
{
    PrivateBus bus;
    bus.kill();
    RecordedConnection recorded;
    CHECK(recorded.connection->sendSynchronously({{"message", 1}}) == Invalid);
    CHECK(recorded.settledEvents() == Invalidity);
}

TEST_CASE("a malformed service name is an invalid endpoint")
{
    PrivateBus bus;
    for (const char* name : {"", "nodots", "a..b", "a.b c", ":1.1'", "a.b',member='c"}) {
        RecordedConnection recorded(name);
        CHECK(recorded.connection->sendSynchronously({{"message", 1}}) == Invalid);
        CHECK(recorded.settledEvents() == Invalidity);
    }
}

TEST_CASE("a peer killed while a reply is pending interrupts, and the same connection reaches it again")
{
    PrivateBus bus;
    auto service = startTestService();
    RecordedConnection recorded;
    std::thread killer([&] {
        waitUntilAsked(*recorded.connection);
        service->kill();
    });
    CHECK(recorded.connection->sendSynchronously({{"message", 2}}) == Interrupted);
    killer.join();
    CHECK(recorded.settledEvents() == Interruption);

    service = startTestService();
    CHECK(answers(*recorded.connection));
    CHECK(recorded.settledEvents() == Interruption);
}

TEST_CASE("a peer that ends by itself without an answer interrupts sync and async sends alike")
{
    PrivateBus bus;
    auto service = startTestService();
    RecordedConnection recorded;
    const auto replies = std::make_shared<Replies>();
    recorded.connection->send({{"message", 2}}, Queue::global(), recordIn(replies));
    CHECK(recorded.connection->sendSynchronously({{"message", 3}}) == Interrupted);
    CHECK(replies->waitFor(1) == std::vector{Interrupted});
    CHECK(recorded.settledEvents() == Interruption);
}

TEST_CASE("every loss of an idle peer is told once")
{
    PrivateBus bus;
    auto service = startTestService();
    RecordedConnection recorded;
    CHECK(answers(*recorded.connection));
    service->kill();
    CHECK(recorded.events->waitFor(1) == Interruption);
    service = startTestService();
    CHECK(answers(*recorded.connection));
    service->kill();
    CHECK(recorded.settledEvents() == Events{ServiceError::Interrupted, ServiceError::Interrupted});
}

TEST_CASE("a bus that dies answers what is pending with invalid, and a new connection works when it is back")
{
    PrivateBus bus;
    auto service = startTestService();
    RecordedConnection recorded;
    const auto replies = std::make_shared<Replies>();
    for (int index = 0; index < 10; ++index)
        recorded.connection->send({{"message", 2}}, Queue::global(), recordIn(replies));
    std::thread killer([&] {
        waitUntilAsked(*recorded.connection);
        bus.kill();
    });
    CHECK(recorded.connection->sendSynchronously({{"message", 2}}) == Invalid);
    killer.join();
    CHECK(replies->waitFor(10) == std::vector<ServiceReply>(10, Invalid));
    CHECK(recorded.settledEvents() == Invalidity);
    CHECK(recorded.connection->sendSynchronously({{"message", 1}}) == Invalid);

    bus.restart();
    service = startTestService();
    RecordedConnection later;
    CHECK(answers(*later.connection));
    CHECK(recorded.settledEvents() == Invalidity);
}

TEST_CASE("a bus that dies while nothing is pending makes the connection invalid")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    CHECK(answers(*recorded.connection));
    bus.kill();
    CHECK(recorded.events->waitFor(1) == Invalidity);
    bus.restart();
    CHECK(recorded.connection->sendSynchronously({{"message", 1}}) == Invalid);
}

TEST_CASE("a service that can be activated is started by the first message")
{
    PrivateBus bus;
    bus.addActivatable(TestServiceName, std::string(BREVANE_TEST_SERVICE) + " " + TestServiceName);
    RecordedConnection recorded;
    CHECK(answers(*recorded.connection));
    CHECK(recorded.connection->sendSynchronously({{"message", 3}}) == Interrupted);
    CHECK(answers(*recorded.connection));
    CHECK(recorded.settledEvents() == Interruption);
}

TEST_CASE("a service that can't be activated is invalid, however it fails")
{
    PrivateBus bus;
    SUBCASE("its program is missing")
    {
        bus.addActivatable(TestServiceName, "/nonexistent/program");
    }
    SUBCASE("its program ends at once")
    {
        bus.addActivatable(TestServiceName, "/bin/false");
    }
    SUBCASE("it never takes the name")
    {
        bus.addActivatable(TestServiceName, "/bin/sleep 5");
    }
    RecordedConnection recorded;
    CHECK(recorded.connection->sendSynchronously({{"message", 1}}) == Invalid);
    CHECK(recorded.settledEvents() == Invalidity);
}

TEST_CASE("a service that the policy denies is invalid")
{
    PrivateBus bus;
    const auto service = startTestService();
    bus.addPolicy(std::string("<deny send_destination=\"") + TestServiceName + "\"/>");
    RecordedConnection recorded;
    CHECK(recorded.connection->sendSynchronously({{"message", 1}}) == Invalid);
    CHECK(recorded.settledEvents() == Invalidity);
}

TEST_CASE("entries of a reply that can't travel are left out")
{
    PrivateBus bus;
    const auto service = startTestService("--raw");
    RecordedConnection recorded;
    const ServiceReply reply = recorded.connection->sendSynchronously({{"message", 9}});
    REQUIRE(reply);
    CHECK(reply->size() == 2);
    CHECK(integerIn(*reply, "number") == 7);
    CHECK(dataIn(*reply, "payload") == platform::Data{1, 2});
}

TEST_CASE("what a peer that lives answers concerns that request alone")
{
    PrivateBus bus;
    const auto service = startTestService("--raw");
    RecordedConnection recorded;
    for (const std::int64_t message : {10, 11})
        CHECK(recorded.connection->sendSynchronously({{"message", message}})
              == ServiceReply(std::unexpected(ServiceError::Refused)));
    CHECK(recorded.settledEvents().empty());
    CHECK_FALSE(recorded.connection->isInvalid());
    CHECK(recorded.connection->sendSynchronously({{"message", 9}}));
}

TEST_CASE("a request that the peer drops is answered, and those that are pending beside it stay")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    const auto replies = std::make_shared<Arrivals<ServiceReply>>();
    recorded.connection->send({{"message", 4}, {"delay", 300}, {"echo", 5}}, recorded.queue,
                              [replies](ServiceReply reply) { replies->add(std::move(reply)); });
    CHECK(recorded.connection->sendSynchronously({{"message", 8}})
          == ServiceReply(std::unexpected(ServiceError::Refused)));
    const auto answered = replies->waitFor(1);
    REQUIRE(answered.size() == 1);
    REQUIRE(answered.front());
    CHECK(integerIn(*answered.front(), "echo") == 5);
    CHECK(recorded.settledEvents().empty());
}

TEST_CASE("a request above what the bus carries is told as such and costs the connection nothing")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    const platform::ServiceDictionary big = {{"message", 7}, {"payload", platform::Data(std::size_t(32) << 20)}};
    const ServiceReply tooLarge = std::unexpected(ServiceError::TooLarge);
    CHECK(recorded.connection->sendSynchronously(big) == tooLarge);
    const auto replies = std::make_shared<Arrivals<ServiceReply>>();
    recorded.connection->send(big, recorded.queue, [replies](ServiceReply reply) { replies->add(std::move(reply)); });
    CHECK(replies->waitFor(1) == std::vector<ServiceReply>{tooLarge});
    recorded.connection->send(big);
    // What is just below goes through.
    const auto reply = recorded.connection->sendSynchronously(
        {{"message", 7}, {"payload", platform::Data((std::size_t(32) << 20) - 8192)}});
    REQUIRE(reply);
    CHECK(integerIn(*reply, "size") == (32 << 20) - 8192);
    CHECK(recorded.settledEvents().empty());
}

TEST_CASE("threads that send at once each get their own replies")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    constexpr int ThreadCount = 4;
    constexpr int MessageCount = 1000;
    std::atomic<int> right = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < ThreadCount; ++thread) {
        threads.emplace_back([&, thread] {
            for (int index = 0; index < MessageCount; ++index) {
                const std::int64_t size = thread * MessageCount + index;
                const ServiceReply reply = recorded.connection->sendSynchronously({{"message", 1}, {"size", size}});
                right += reply && dataIn(*reply, "payload")->size() == static_cast<std::size_t>(size);
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    CHECK(right == ThreadCount * MessageCount);
    CHECK(recorded.settledEvents().empty());
}

TEST_CASE("one-way, asynchronous and synchronous sends mix, and asynchronous replies keep their order")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    const auto queue = Queue::createSerial("com.zerkolin.test.replies");
    constexpr std::int64_t Count = 500;
    const auto replies = std::make_shared<Replies>();
    std::atomic<int> right = 0;
    std::thread synchronous([&] {
        for (int index = 0; index < Count; ++index)
            right += answers(*recorded.connection);
    });
    for (std::int64_t index = 0; index < Count; ++index) {
        recorded.connection->send({{"message", 6}});
        recorded.connection->send({{"message", 1}, {"size", index}}, queue, recordIn(replies));
        // A system bus allows 128 replies to be outstanding.
        if (index % 100 == 99)
            replies->waitFor(static_cast<std::size_t>(index) + 1);
    }
    const std::vector<ServiceReply> received = replies->waitFor(Count);
    synchronous.join();
    REQUIRE(received.size() == Count);
    for (std::size_t index = 0; index < Count; ++index) {
        REQUIRE(received[index]);
        CHECK(dataIn(*received[index], "payload")->size() == index);
    }
    CHECK(right == Count);
    const ServiceReply counted = recorded.connection->sendSynchronously({{"message", 5}});
    REQUIRE(counted);
    CHECK(integerIn(*counted, "received") == Count);
}

TEST_CASE("a reply of 10 MB arrives whole")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    constexpr std::int64_t Size = 10 * 1024 * 1024;
    const ServiceReply reply = recorded.connection->sendSynchronously({{"message", 1}, {"size", Size}});
    REQUIRE(reply);
    CHECK(dataIn(*reply, "payload") == platform::Data(Size, 0x5A));
}

TEST_CASE("a request of 10 MB arrives whole, however it is sent")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    constexpr std::int64_t Size = 10 * 1024 * 1024;
    const platform::ServiceDictionary message = {{"message", 7}, {"payload", platform::Data(Size, 1)}};
    SUBCASE("synchronously, from two threads")
    {
        std::thread other([&] {
            const ServiceReply reply = recorded.connection->sendSynchronously(message);
            CHECK((reply && integerIn(*reply, "size") == Size));
        });
        const ServiceReply reply = recorded.connection->sendSynchronously(message);
        CHECK((reply && integerIn(*reply, "size") == Size));
        other.join();
    }
    SUBCASE("asynchronously, while a thread waits for another reply")
    {
        std::thread waiting([&] {
            const ServiceReply reply =
                recorded.connection->sendSynchronously({{"message", 4}, {"delay", 300}, {"echo", 9}});
            CHECK((reply && integerIn(*reply, "echo") == 9));
        });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        const auto replies = std::make_shared<Replies>();
        recorded.connection->send(message, Queue::global(), recordIn(replies));
        const std::vector<ServiceReply> received = replies->waitFor(1);
        REQUIRE(received.size() == 1);
        CHECK((received[0] && integerIn(*received[0], "size") == Size));
        waiting.join();
    }
    SUBCASE("one way")
    {
        platform::ServiceDictionary oneWay = message;
        oneWay["message"] = 6;
        recorded.connection->send(oneWay);
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        const ServiceReply reply = recorded.connection->sendSynchronously({{"message", 5}});
        CHECK((reply && integerIn(*reply, "received") == 1));
    }
}

TEST_CASE("a reply that another thread of the peer sends late does not hold up the others")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    const auto replies = std::make_shared<Replies>();
    recorded.connection->send({{"message", 4}, {"delay", 200}, {"echo", 1}}, Queue::global(), recordIn(replies));
    std::thread slow([&] {
        const ServiceReply reply =
            recorded.connection->sendSynchronously({{"message", 4}, {"delay", 200}, {"echo", 2}});
        CHECK((reply && integerIn(*reply, "echo") == 2));
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
    CHECK(answers(*recorded.connection));
    CHECK(replies->waitFor(0).empty());
    slow.join();
    const std::vector<ServiceReply> received = replies->waitFor(1);
    REQUIRE(received.size() == 1);
    CHECK((received[0] && integerIn(*received[0], "echo") == 1));
}

TEST_CASE("cancelling answers each pending send once with invalid, also those of other threads")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    RecordedConnection other;
    const auto replies = std::make_shared<Replies>();
    for (int index = 0; index < 20; ++index)
        recorded.connection->send({{"message", 2}}, Queue::global(), recordIn(replies));
    std::atomic<int> invalid = 0;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread)
        threads.emplace_back([&] { invalid += recorded.connection->sendSynchronously({{"message", 2}}) == Invalid; });
    waitUntilAsked(*other.connection);
    recorded.connection->cancel();
    for (std::thread& thread : threads)
        thread.join();
    CHECK(invalid == 3);
    CHECK(recorded.connection->sendSynchronously({{"message", 1}}) == Invalid);
    CHECK(recorded.settledEvents() == Invalidity);
    CHECK(replies->waitFor(20) == std::vector<ServiceReply>(20, Invalid));
    CHECK(answers(*other.connection));
    CHECK(other.settledEvents().empty());
}

TEST_CASE("nothing is exchanged before resume, and what was sent by then is sent afterwards")
{
    PrivateBus bus;
    const auto service = startTestService();
    const auto connection = platform::ServiceConnection::create(TestServiceName, Queue::global(), 0);
    const auto replies = std::make_shared<Replies>();
    connection->send({{"message", 6}});
    connection->send({{"message", 5}}, Queue::global(), recordIn(replies));
    RecordedConnection other;
    const ServiceReply before = other.connection->sendSynchronously({{"message", 5}});
    CHECK((before && integerIn(*before, "received") == 0));
    CHECK(replies->waitFor(0).empty());
    connection->resume();
    const std::vector<ServiceReply> received = replies->waitFor(1);
    REQUIRE(received.size() == 1);
    CHECK((received[0] && integerIn(*received[0], "received") == 1));
}

TEST_CASE("a connection that is dropped while a reply is pending still gets it")
{
    PrivateBus bus;
    const auto service = startTestService();
    const auto replies = std::make_shared<Replies>();
    {
        const auto connection = platform::ServiceConnection::create(TestServiceName, Queue::global(), 0);
        connection->resume();
        connection->send({{"message", 4}, {"delay", 100}, {"echo", 3}}, Queue::global(), recordIn(replies));
    }
    const std::vector<ServiceReply> received = replies->waitFor(1);
    REQUIRE(received.size() == 1);
    CHECK((received[0] && integerIn(*received[0], "echo") == 3));
}
