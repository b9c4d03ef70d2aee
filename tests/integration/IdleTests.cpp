#include "tests/integration/TestService.h"
#include "tests/support/Instrumented.h"
#include "tests/support/PrivateBus.h"

#include <cstdio>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <unistd.h>

namespace {

// How often each thread but this one has gone to sleep so far.
std::map<std::string, long> sleepsOfThreads(pid_t process)
{
    std::map<std::string, long> counts;
    for (const auto& task : std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        const std::string name = task.path().filename();
        if (name == std::to_string(gettid()))
            continue;
        std::ifstream status(task.path() / "status");
        const std::string field = "voluntary_ctxt_switches:";
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with(field))
                counts[name] = std::stol(line.substr(field.size()));
        }
    }
    return counts;
}

std::size_t threadsNamed(const std::string& name)
{
    std::size_t count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "comm");
        std::string line;
        std::getline(file, line);
        count += line == name;
    }
    return count;
}

bool becomes(const std::function<bool()>& condition)
{
    for (int attempt = 0; attempt < 250 && !condition(); ++attempt)
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    return condition();
}

} // namespace

TEST_CASE("nothing wakes either process while a connection is idle")
{
    if (areThreadsChecked) {
        std::puts("SKIPPED: the thread sanitizer has a thread of its own that wakes");
        return;
    }
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    REQUIRE(recorded.connection->sendSynchronously({{"message", 1}}));
    const auto replies = std::make_shared<Arrivals<platform::ServiceReply>>();
    recorded.connection->send({{"message", 1}}, recorded.queue,
                              [replies](platform::ServiceReply reply) { replies->add(std::move(reply)); });
    REQUIRE(replies->waitFor(1).size() == 1);
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    const auto client = sleepsOfThreads(getpid());
    const auto server = sleepsOfThreads(service->pid());
    CHECK_FALSE(client.empty());
    CHECK_FALSE(server.empty());
    std::this_thread::sleep_for(std::chrono::seconds(1));
    CHECK(sleepsOfThreads(getpid()) == client);
    CHECK(sleepsOfThreads(service->pid()) == server);
}

TEST_CASE("the connection's own thread ends with the bus")
{
    PrivateBus bus;
    const auto service = startTestService();
    RecordedConnection recorded;
    REQUIRE(recorded.connection->sendSynchronously({{"message", 1}}));
    CHECK(becomes([] { return threadsNamed("service bus") == 1; }));
    bus.kill();
    CHECK(recorded.events->waitFor(1).size() == 1);
    CHECK(becomes([] { return threadsNamed("service bus") == 0; }));
}
