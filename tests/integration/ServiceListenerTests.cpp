#include "platform/ServiceListener.h"
#include "tests/integration/TestService.h"
#include "tests/support/PrivateBus.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <doctest/doctest.h>
#include <functional>
#include <future>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <systemd/sd-bus.h>
#include <thread>
#include <unistd.h>

using platform::ServiceListener;

namespace {

// A listener served by a thread of its own.
class Served {
public:
    explicit Served(decltype(ServiceListener::Handlers::received) handler)
        : Served(ServiceListener::Handlers{std::move(handler), {}, {}})
    {
    }
    explicit Served(ServiceListener::Handlers handlers, std::vector<platform::ServiceKey> form = {})
    {
        auto created = ServiceListener::create(TestServiceName, std::move(handlers), std::move(form));
        REQUIRE(created);
        listener = std::move(*created);
        _thread = std::thread([this] { _result = listener->run(); });
    }
    ~Served() { stop(); }
    Served(const Served&) = delete;
    Served& operator=(const Served&) = delete;

    bool stop()
    {
        listener->stop();
        return join();
    }
    bool join()
    {
        if (_thread.joinable())
            _thread.join();
        return _result;
    }

    std::unique_ptr<ServiceListener> listener;

private:
    std::atomic<bool> _result = false;
    std::thread _thread;
};

void echo(ServiceListener::Request request, const ServiceListener::Reply& reply)
{
    reply({{"number", integerIn(request.message, "number").value_or(-1)},
           {"sender", platform::Data(request.sender.begin(), request.sender.end())}});
}

// Whether it is what a request was answered with, and no error.
bool isReply(sd_bus_message* message)
{
    return sd_bus_message_has_signature(message, "a{sv}") > 0
        && sd_bus_message_is_method_call(message, nullptr, nullptr) == 0;
}

// A client that says what it likes.
class RawClient {
public:
    RawClient()
    {
        REQUIRE(sd_bus_open_system(&_bus) >= 0);
        const char* name = nullptr;
        REQUIRE(sd_bus_get_unique_name(_bus, &name) >= 0); // waits until it is connected
    }
    ~RawClient() { sd_bus_close_unref(_bus); }
    RawClient(const RawClient&) = delete;
    RawClient& operator=(const RawClient&) = delete;

    template <class... Arguments>
    int call(const char* member, const char* types, Arguments... arguments)
    {
        sd_bus_error error{};
        const int result = sd_bus_call_method(_bus, TestServiceName, "/com/zerkolin/brevane/scheduler", TestServiceName,
                                              member, &error, nullptr, types, arguments...);
        errorName = error.name ? error.name : "";
        sd_bus_error_free(&error);
        return result;
    }

    // A request of nothing, whose reply is not waited for.
    void begin()
    {
        sd_bus_message* message = nullptr;
        REQUIRE(sd_bus_message_new_method_call(_bus, &message, TestServiceName, "/com/zerkolin/brevane/scheduler",
                                               TestServiceName, "Send")
                >= 0);
        sd_bus_message_append(message, "a{sv}", 0);
        std::uint64_t cookie = 0; // without one no reply is asked for
        CHECK(sd_bus_send(_bus, message, &cookie) >= 0);
        sd_bus_message_unref(message);
    }

    // Counts what its calls are answered with from now on.
    void count()
    {
        const auto filter = [](sd_bus_message* message, void* client, sd_bus_error*) {
            auto& self = *static_cast<RawClient*>(client);
            self.replyCount += isReply(message);
            self.refusalCount += sd_bus_message_is_method_error(message, SD_BUS_ERROR_LIMITS_EXCEEDED) > 0;
            return self.answersPings ? 0 : 1;
        };
        REQUIRE(sd_bus_add_filter(_bus, nullptr, filter, this) >= 0);
    }
    // Handles what has come, and answers a ping. False when there is nothing.
    bool read() { return sd_bus_process(_bus, nullptr) > 0; }

    sd_bus* bus() const { return _bus; }
    std::string errorName;
    int replyCount = 0;
    int refusalCount = 0;
    bool answersPings = true;

private:
    sd_bus* _bus = nullptr;
};

// All of them read until that is so, or nothing has come for a minute.
void readUntil(const std::vector<RawClient*>& clients, const std::function<bool()>& isSo)
{
    constexpr std::chrono::minutes patience(1);
    for (auto last = std::chrono::steady_clock::now(); !isSo() && std::chrono::steady_clock::now() < last + patience;) {
        bool hasRead = false;
        for (RawClient* client : clients) {
            while (client->read())
                hasRead = true;
        }
        if (hasRead)
            last = std::chrono::steady_clock::now();
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
}

// The same until so many calls of theirs are answered.
void readUntilAnswered(const std::vector<RawClient*>& clients, int count)
{
    readUntil(clients, [&] {
        int sum = 0;
        for (const RawClient* client : clients)
            sum += client->replyCount + client->refusalCount;
        return sum >= count;
    });
}

// Answers a request with a megabyte, and one that has a number with a byte.
void answerMuch(const ServiceListener::Request& request, const ServiceListener::Reply& reply)
{
    reply({{"payload", platform::Data(request.message.empty() ? 1'000'000 : 1)}});
}

} // namespace

TEST_CASE("a listener hands out the message and the sender that the bus reports")
{
    PrivateBus bus;
    Served served(echo);
    RecordedConnection recorded;
    const platform::ServiceReply reply = recorded.connection->sendSynchronously({{"number", -5}});
    REQUIRE(reply);
    CHECK(integerIn(*reply, "number") == -5);
    CHECK(textIn(*reply, "sender").starts_with(":1."));
    CHECK(served.stop());
}

TEST_CASE("a listener that was told to stop before it runs stops at once")
{
    PrivateBus bus;
    auto created = ServiceListener::create(TestServiceName, {echo, {}, {}});
    REQUIRE(created);
    (*created)->stop();
    CHECK((*created)->run());
}

TEST_CASE("a signal handler may stop a listener")
{
    PrivateBus bus;
    const auto service = startTestService();
    service->signal(SIGTERM);
    CHECK(service->wait() == 0);
}

TEST_CASE("a termination in the moment of another end is seen, or waits for the next program")
{
    PrivateBus bus;
    int missed = 0;
    for (int round = 0; round < 100; ++round) {
        std::promise<ServiceListener*> running;
        std::promise<void> told;
        std::thread thread([&] {
            sigset_t termination;
            sigemptyset(&termination);
            sigaddset(&termination, SIGTERM);
            pthread_sigmask(SIG_BLOCK, &termination, nullptr);
            auto listener = ServiceListener::create(TestServiceName, {echo, {}, {}});
            REQUIRE(listener);
            (*listener)->stopOnTermination();
            (*listener)->async([&] { running.set_value(listener->get()); });
            CHECK((*listener)->run());
            told.get_future().wait();
            const timespec soon = {0, 50'000'000};
            missed += !(*listener)->wasTerminated() && sigtimedwait(&termination, nullptr, &soon) != SIGTERM;
        });
        ServiceListener* listener = running.get_future().get();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
        if (round % 2 == 0)
            listener->stop();
        pthread_kill(thread.native_handle(), SIGTERM);
        if (round % 2 == 1)
            listener->stop();
        told.set_value();
        thread.join();
    }
    CHECK(missed == 0);
}

TEST_CASE("a listener ends with failure when the bus is lost")
{
    PrivateBus bus;
    const auto service = startTestService();
    bus.kill();
    CHECK(service->wait() == 3);
}

TEST_CASE("a name that is taken, malformed or not allowed can't be served")
{
    PrivateBus bus;
    const auto first = ServiceListener::create(TestServiceName, {echo, {}, {}});
    REQUIRE(first);
    const auto second = ServiceListener::create(TestServiceName, {echo, {}, {}});
    REQUIRE_FALSE(second);
    CHECK(second.error().starts_with("Cannot serve com.zerkolin.brevane.scheduler: the name cannot be owned ("));
    CHECK_FALSE(ServiceListener::create("", {echo, {}, {}}));
    CHECK_FALSE(ServiceListener::create("not a name", {echo, {}, {}}));
    bus.addPolicy("<deny own=\"com.example.denied\"/>");
    CHECK_FALSE(ServiceListener::create("com.example.denied", {echo, {}, {}}));
    bus.kill();
    const auto none = ServiceListener::create(TestServiceName, {echo, {}, {}});
    REQUIRE_FALSE(none);
    CHECK(none.error().find("there is no system bus") != std::string::npos);
}

TEST_CASE("a name is not waited for: the first owner's end does not pass it on")
{
    PrivateBus bus;
    const auto first = startTestService();
    CHECK_FALSE(ServiceListener::create(TestServiceName, {echo, {}, {}}));
    first->kill();
    RecordedConnection recorded;
    CHECK(recorded.connection->sendSynchronously({{"number", 1}})
          == platform::ServiceReply(std::unexpected(platform::ServiceError::Invalid)));
}

TEST_CASE("replies may come from any thread, late and in any order")
{
    PrivateBus bus;
    std::vector<std::thread> workers;
    std::atomic<int> seen = 0;
    Served served([&](ServiceListener::Request request, ServiceListener::Reply reply) {
        workers.emplace_back([number = integerIn(request.message, "number").value_or(0), reply, &seen] {
            ++seen;
            while (seen < 8) // all are in before the first is answered
                std::this_thread::yield();
            std::this_thread::sleep_for(std::chrono::milliseconds(5 * (8 - number)));
            reply({{"number", number}});
        });
    });
    RecordedConnection recorded;
    std::vector<std::thread> clients;
    std::atomic<int> right = 0;
    for (std::int64_t number = 0; number < 8; ++number) {
        clients.emplace_back([&, number] {
            const platform::ServiceReply reply = recorded.connection->sendSynchronously({{"number", number}});
            right += reply && integerIn(*reply, "number") == number;
        });
    }
    for (std::thread& client : clients)
        client.join();
    CHECK(right == 8);
    served.stop();
    for (std::thread& worker : workers)
        worker.join();
}

TEST_CASE("a second reply to a request is ignored")
{
    PrivateBus bus;
    Served served([](const ServiceListener::Request&, const ServiceListener::Reply& reply) {
        reply({{"number", 1}});
        reply({{"number", 2}});
    });
    RecordedConnection recorded;
    for (int index = 0; index < 3; ++index) {
        const platform::ServiceReply reply = recorded.connection->sendSynchronously({});
        REQUIRE(reply);
        CHECK(integerIn(*reply, "number") == 1);
    }
}

TEST_CASE("a reply given after the listener went away is dropped")
{
    PrivateBus bus;
    Arrivals<ServiceListener::Reply> owed;
    RecordedConnection recorded;
    const auto replies = std::make_shared<Arrivals<platform::ServiceReply>>();
    {
        Served served(
            [&](const ServiceListener::Request&, ServiceListener::Reply reply) { owed.add(std::move(reply)); });
        recorded.connection->send({}, platform::Queue::global(),
                                  [replies](platform::ServiceReply reply) { replies->add(std::move(reply)); });
        REQUIRE(owed.waitFor(1).size() == 1);
    }
    owed.waitFor(1).front()({{"number", 1}});
    CHECK(replies->waitFor(1)
          == std::vector<platform::ServiceReply>{std::unexpected(platform::ServiceError::Interrupted)});
}

TEST_CASE("a request that asks for no reply gets none")
{
    PrivateBus bus;
    Arrivals<std::int64_t> seen;
    Served served([&](ServiceListener::Request request, const ServiceListener::Reply& reply) {
        const std::int64_t number = integerIn(request.message, "number").value_or(-1);
        CHECK((reply != nullptr) == (number == 10));
        if (reply)
            reply({{"number", number}});
        seen.add(number);
    });
    RawClient client;
    int unasked = 0;
    const auto count = [](sd_bus_message* message, void* context, sd_bus_error*) {
        *static_cast<int*>(context) += sd_bus_message_is_method_call(message, nullptr, nullptr) == 0
            && sd_bus_message_is_signal(message, nullptr, nullptr) == 0;
        return 0;
    };
    REQUIRE(sd_bus_add_filter(client.bus(), nullptr, count, &unasked) >= 0);
    for (std::int64_t number = 0; number < 4; ++number) {
        sd_bus_message* message = nullptr;
        REQUIRE(sd_bus_message_new_method_call(client.bus(), &message, TestServiceName,
                                               "/com/zerkolin/brevane/scheduler", TestServiceName, "Send")
                >= 0);
        sd_bus_message_set_expect_reply(message, 0);
        sd_bus_message_append(message, "a{sv}", 1, "number", "x", number);
        CHECK(sd_bus_send(client.bus(), message, nullptr) >= 0);
        sd_bus_message_unref(message);
    }
    CHECK(seen.waitFor(4).size() == 4);
    // Whatever had been sent to it would come before this answer.
    CHECK(client.call("Send", "a{sv}", 1, "number", "x", std::int64_t(10)) >= 0);
    while (sd_bus_process(client.bus(), nullptr) > 0) { }
    CHECK(unasked == 0);
}

TEST_CASE("messages that are not to the point are refused and change nothing")
{
    PrivateBus bus;
    std::atomic<int> handled = 0;
    Served served([&](ServiceListener::Request request, const ServiceListener::Reply& reply) {
        ++handled;
        CHECK(request.message.size() == 1);
        reply({});
    });
    RawClient client;
    CHECK(client.call("Send", "s", "text") < 0);
    CHECK(client.errorName == "org.freedesktop.DBus.Error.InvalidArgs");
    CHECK(client.call("Send", nullptr) < 0);
    CHECK(client.call("Send", "a{ss}", 1, "message", "1") < 0);
    CHECK(client.call("Other", nullptr) < 0);
    CHECK(client.errorName == "org.freedesktop.DBus.Error.UnknownMethod");
    CHECK(handled == 0);
    // Entries of other types are left out, and of a key given twice the last counts.
    CHECK(client.call("Send", "a{sv}", 4, "message", "x", std::int64_t(1), "text", "s", "words", "number", "u", 7,
                      "message", "x", std::int64_t(2))
          >= 0);
    CHECK(handled == 1);
}

TEST_CASE("a big reply from another thread leaves even when the listener stops right after")
{
    PrivateBus bus;
    constexpr std::size_t Size = 10 * 1024 * 1024;
    ServiceListener* listener = nullptr;
    std::thread worker;
    Served served([&](const ServiceListener::Request&, ServiceListener::Reply reply) {
        worker = std::thread([reply, &listener] {
            reply({{"payload", platform::Data(Size, 1)}});
            listener->stop();
        });
    });
    listener = served.listener.get();
    RecordedConnection recorded;
    const platform::ServiceReply reply = recorded.connection->sendSynchronously({});
    REQUIRE(reply);
    CHECK(dataIn(*reply, "payload")->size() == Size);
    CHECK(served.join());
    worker.join();
}

TEST_CASE("with a form its keys are read and no other, and what is too long is named and left out")
{
    PrivateBus bus;
    Arrivals<ServiceListener::Request> requests;
    Served served({[&](ServiceListener::Request request, const ServiceListener::Reply& reply) {
                       requests.add(std::move(request));
                       reply({});
                   },
                   {},
                   {}},
                  {{"number", 0}, {"payload", 10}});
    RecordedConnection recorded;
    CHECK(recorded.connection->sendSynchronously(
        {{"number", 5}, {"payload", platform::Data(10)}, {"other", platform::Data(5'000'000)}, {"more", 6}}));
    CHECK(recorded.connection->sendSynchronously({{"payload", platform::Data(11)}}));
    const auto seen = requests.waitFor(2);
    REQUIRE(seen.size() == 2);
    CHECK(seen[0].message == platform::ServiceDictionary{{"number", 5}, {"payload", platform::Data(10)}});
    CHECK(seen[0].tooLong.empty());
    CHECK(seen[1].message.empty());
    CHECK(seen[1].tooLong == std::vector<std::string>{"payload"});
}

TEST_CASE("a message of many values is refused before it is looked through")
{
    PrivateBus bus;
    std::atomic<int> handled = 0;
    Served served({[&](const ServiceListener::Request&, const ServiceListener::Reply& reply) {
                       ++handled;
                       reply({});
                   },
                   {},
                   {}},
                  {{"number", 0}});
    RawClient client;
    const auto send = [&](int entryCount, int valueCount) {
        sd_bus_message* message = nullptr;
        REQUIRE(sd_bus_message_new_method_call(client.bus(), &message, TestServiceName,
                                               "/com/zerkolin/brevane/scheduler", TestServiceName, "Send")
                >= 0);
        sd_bus_message_open_container(message, 'a', "{sv}");
        for (int entry = 0; entry < entryCount; ++entry) {
            sd_bus_message_open_container(message, 'e', "sv");
            sd_bus_message_append(message, "s", "junk");
            sd_bus_message_open_container(message, 'v', "av");
            sd_bus_message_open_container(message, 'a', "v");
            for (int value = 0; value < valueCount; ++value)
                sd_bus_message_append(message, "v", "s", "x");
            sd_bus_message_close_container(message);
            sd_bus_message_close_container(message);
            sd_bus_message_close_container(message);
        }
        sd_bus_message_close_container(message);
        sd_bus_error error{};
        const int result = sd_bus_call(client.bus(), message, 0, &error, nullptr);
        sd_bus_error_free(&error);
        sd_bus_message_unref(message);
        return result;
    };
    CHECK(send(3, 20) >= 0);
    CHECK(handled == 1);
    CHECK(send(1, 200'000) < 0);
    CHECK(send(20'000, 1) < 0);
    CHECK(handled == 1);
    CHECK(send(1, 1) >= 0);
}

TEST_CASE("a listener learns from the bus who its senders are, and when they leave")
{
    PrivateBus bus;
    Arrivals<platform::ServicePeer> identified;
    Arrivals<std::string> left;
    Served served({echo, [&](const platform::ServicePeer& peer) { identified.add(peer); },
                   [&](const std::string& name) { left.add(name); }});
    std::string name;
    {
        RawClient client;
        const char* unique = nullptr;
        REQUIRE(sd_bus_get_unique_name(client.bus(), &unique) >= 0);
        name = unique;
        CHECK(client.call("Send", "a{sv}", 0) >= 0);
        CHECK(client.call("Send", "a{sv}", 0) >= 0);
        REQUIRE(identified.waitFor(1).size() == 1);
    }
    CHECK(left.waitFor(1) == std::vector<std::string>{name});
    const auto peers = identified.waitFor(0);
    REQUIRE(peers.size() == 1);
    CHECK(peers[0].name == name);
    CHECK(peers[0].user == getuid());
    CHECK(peers[0].process == static_cast<std::uint32_t>(getpid()));
    CHECK(peers[0].program.ends_with(program_invocation_short_name));
}

TEST_CASE(
    "a user whose clients never read is cut off before the bus stops to listen, and answered again when they read")
{
    bool isKnownBefore = false;
    SUBCASE("of clients that are known")
    {
        isKnownBefore = true;
    }
    SUBCASE("of clients that send it all at once") { }
    PrivateBus bus;
    Arrivals<platform::ServicePeer> identified;
    Served served({answerMuch, [&](const platform::ServicePeer& peer) { identified.add(peer); }, {}});
    std::vector<std::unique_ptr<RawClient>> deaf;
    std::vector<RawClient*> clients;
    // The bus takes nothing more from a connection of which 127 MB are unread.
    for (std::size_t index = 0; index < 3; ++index) {
        deaf.push_back(std::make_unique<RawClient>());
        clients.push_back(deaf.back().get());
        if (isKnownBefore) {
            CHECK(deaf.back()->call("Send", "a{sv}", 1, "number", "x", std::int64_t(1)) >= 0);
            REQUIRE(identified.waitFor(index + 1).size() == index + 1);
        }
        for (int count = 0; count < 100; ++count)
            deaf.back()->begin();
        sd_bus_flush(deaf.back()->bus());
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1000));
    if (isKnownBefore) {
        RecordedConnection early; // is told, once it is known whose it is
        platform::ServiceReply reply;
        for (int number = 0; number < 10 && reply; ++number)
            reply = early.connection->sendSynchronously({{"number", 1}});
        CHECK(reply == platform::ServiceReply(std::unexpected(platform::ServiceError::Refused)));
    }
    for (RawClient* client : clients)
        client->count();
    readUntilAnswered(clients, 300);
    int replyCount = 0;
    int refusalCount = 0;
    for (const RawClient* client : clients) {
        replyCount += client->replyCount;
        refusalCount += client->refusalCount;
    }
    CHECK(replyCount >= (isKnownBefore ? 10 : 1));
    CHECK(replyCount <= 20);
    CHECK(replyCount + refusalCount == 300);
    RecordedConnection recorded;
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!recorded.connection->sendSynchronously({{"number", 1}}) && std::chrono::steady_clock::now() < end) {
        for (RawClient* client : clients)
            client->read(); // the last pings
    }
    for (int number = 0; number < 30; ++number)
        CHECK(recorded.connection->sendSynchronously({{"number", 1}}));
}

TEST_CASE("every call of a user who is cut off is answered as soon as its sender reads, or the others do or leave")
{
    constexpr int Many = 100; // the bus lets a connection wait for so many replies only
    PrivateBus bus;
    Arrivals<platform::ServicePeer> identified;
    Served served({answerMuch, [&](const platform::ServicePeer& peer) { identified.add(peer); }, {}});
    auto deaf = std::make_unique<RawClient>();
    RawClient reader;
    RawClient waiting;
    std::size_t known = 0;
    for (RawClient* client : {deaf.get(), &reader, &waiting}) {
        REQUIRE(client->call("Send", "a{sv}", 1, "number", "x", std::int64_t(1)) >= 0);
        REQUIRE(identified.waitFor(++known).size() == known);
        client->count();
    }
    for (int count = 0; count < Many; ++count)
        deaf->begin();
    sd_bus_flush(deaf->bus());
    // Reads, one call after another: each is refused although the deaf one stays deaf.
    const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    int sent = 0;
    while (reader.refusalCount < 3 * Many && sent < 6 * Many && std::chrono::steady_clock::now() < end) {
        reader.begin();
        readUntilAnswered({&reader}, ++sent);
    }
    CHECK(reader.refusalCount == 3 * Many);
    CHECK(reader.replyCount + reader.refusalCount == sent);

    for (int count = 0; count < Many; ++count)
        waiting.begin();
    sd_bus_flush(waiting.bus());
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    SUBCASE("the sender reads")
    {
        readUntilAnswered({&waiting}, Many);
        CHECK(waiting.refusalCount == Many);
    }
    SUBCASE("the others read, and the sender answers no ping")
    {
        waiting.answersPings = false;
        readUntilAnswered({&waiting}, 8);
        CHECK(waiting.refusalCount == 8);
        readUntilAnswered({deaf.get(), &waiting}, 2 * Many);
        CHECK(waiting.refusalCount == Many);
        CHECK(deaf->replyCount + deaf->refusalCount == Many);
    }
    SUBCASE("the others leave, and the sender answers no ping")
    {
        waiting.answersPings = false;
        deaf.reset();
        readUntilAnswered({&waiting}, Many);
        CHECK(waiting.refusalCount == Many);
    }
}

TEST_CASE("the replies of one user do not wait until another one has got all of theirs")
{
    if (geteuid() != 0) {
        MESSAGE("SKIPPED: only root can be two users");
        return;
    }
    PrivateBus bus;
    const std::string path = bus.address().substr(std::strlen("unix:path="));
    REQUIRE(chmod(path.substr(0, path.rfind('/')).c_str(), 0755) == 0);
    constexpr std::size_t Many = 200;
    constexpr uid_t Nobody = 65534;
    std::vector<ServiceListener::Reply> owed;
    Arrivals<platform::ServicePeer> identified;
    Served served({[&](const ServiceListener::Request& request, ServiceListener::Reply reply) {
                       if (request.message.empty())
                           owed.push_back(std::move(reply));
                       else
                           reply({});
                       if (owed.size() <= Many)
                           return;
                       for (const auto& each : std::exchange(owed, {}))
                           each({{"payload", platform::Data(60'000)}});
                   },
                   [&](const platform::ServicePeer& peer) { identified.add(peer); },
                   {}});
    // The numbers that the listener gave to its replies, in the order in which it sent them.
    std::vector<std::uint64_t> numbers;
    const auto note = [](sd_bus_message* message, void* context, sd_bus_error*) {
        std::uint64_t number = 0;
        if (isReply(message) && sd_bus_message_get_cookie(message, &number) >= 0)
            static_cast<std::vector<std::uint64_t>*>(context)->push_back(number);
        return 0;
    };
    RawClient flood;
    CHECK(flood.call("Send", "a{sv}", 1, "number", "x", std::int64_t(1)) >= 0);
    REQUIRE(identified.waitFor(1).size() == 1);
    for (std::size_t count = 0; count < Many / 2; ++count)
        flood.begin();
    RawClient second; // the bus lets a connection wait for so many replies only
    CHECK(second.call("Send", "a{sv}", 1, "number", "x", std::int64_t(1)) >= 0);
    REQUIRE(identified.waitFor(2).size() == 2);
    for (std::size_t count = 0; count < Many / 2; ++count)
        second.begin();
    sd_bus_flush(flood.bus());
    sd_bus_flush(second.bus());
    std::uint64_t own = 0;
    std::thread other([&] {
        REQUIRE(syscall(SYS_setresuid, Nobody, Nobody, Nobody) == 0); // this thread alone
        RawClient client;
        CHECK(client.call("Send", "a{sv}", 1, "number", "x", std::int64_t(1)) >= 0);
        REQUIRE(identified.waitFor(3).size() == 3);
        sd_bus_message* answer = nullptr;
        CHECK(sd_bus_call_method(client.bus(), TestServiceName, "/com/zerkolin/brevane/scheduler", TestServiceName,
                                 "Send", nullptr, &answer, "a{sv}", 0)
              >= 0);
        sd_bus_message_get_cookie(answer, &own);
        sd_bus_message_unref(answer);
    });
    other.join();
    for (RawClient* client : {&flood, &second})
        REQUIRE(sd_bus_add_filter(client->bus(), nullptr, note, &numbers) >= 0);
    readUntil({&flood, &second}, [&] { return numbers.size() >= Many; });
    CHECK(numbers.size() == Many);
    const auto before = std::ranges::count_if(numbers, [&](std::uint64_t number) { return number < own; });
    CHECK(before < static_cast<std::ptrdiff_t>(Many / 2)); // it was the last to be given
}

TEST_CASE("a client that reads is never cut off, however much it is sent")
{
    PrivateBus bus;
    Served served([](const ServiceListener::Request&, const ServiceListener::Reply& reply) {
        reply({{"payload", platform::Data(1'000'000)}});
    });
    RecordedConnection recorded;
    for (int count = 0; count < 100; ++count)
        REQUIRE(recorded.connection->sendSynchronously({}));
}

TEST_CASE("a reply above what the bus carries becomes an error, and the listener serves on")
{
    PrivateBus bus;
    Served served([](const ServiceListener::Request& request, const ServiceListener::Reply& reply) {
        reply({{"payload", platform::Data(request.message.empty() ? std::size_t(40) << 20 : 1)}});
    });
    RecordedConnection recorded;
    CHECK(recorded.connection->sendSynchronously({})
          == platform::ServiceReply(std::unexpected(platform::ServiceError::Refused)));
    CHECK(recorded.connection->sendSynchronously({{"number", 1}}));
    CHECK(served.stop());
}
