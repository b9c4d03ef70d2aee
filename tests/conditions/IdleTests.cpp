#include "platform/Clock.h"
#include "platform/ComputerUse.h"
#include "platform/NetworkRoute.h"
#include "platform/PowerSources.h"
#include "platform/SleepPreventers.h"
#include "tests/conditions/Following.h"
#include "tests/conditions/MockService.h"
#include "tests/support/Instrumented.h"
#include "tests/support/PrivateBus.h"

#include <cstdio>
#include <cstdlib>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

namespace {

// How often the conditions' thread has gone to sleep so far; -1 when there is none.
long sleepsOfConditions()
{
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream name(task.path() / "comm");
        std::string line;
        if (!std::getline(name, line) || line != "conditions")
            continue;
        std::ifstream status(task.path() / "status");
        const std::string field = "voluntary_ctxt_switches:";
        while (std::getline(status, line)) {
            if (line.starts_with(field))
                return std::stol(line.substr(field.size()));
        }
    }
    return -1;
}

} // namespace

TEST_CASE("nothing wakes the conditions' thread while nothing happens")
{
    if (areThreadsChecked) {
        std::puts("SKIPPED: the thread sanitizer has a thread of its own that wakes");
        return;
    }
    PrivateBus bus;
    const auto login = MockService::login();
    const auto power = MockService::power(false);
    login.addSession("c1", "seat0");
    const Following<platform::PowerState> state(platform::followPowerState);
    const Following<platform::ComputerUse> use(platform::followComputerUse);
    const Following<platform::SleepPreventers> preventers(platform::followSleepPreventers);
    const Following<platform::NetworkRoute> route(platform::followNetworkRoute);
    const auto queue = platform::Queue::createSerial("test");
    const auto watch = platform::ClockWatch::create(queue, [](platform::ClockEvent) { });
    const auto timer = platform::ClockTimer::create(platform::ClockTimer::Clock::SinceEpoch, queue, [] { });
    timer->set(platform::readClocks().sinceEpoch + std::chrono::hours(24));

    // As long as somebody wants to know it; a short time by default.
    const char* const seconds = std::getenv("BREVANE_IDLE_SECONDS");
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    const auto before = sleepsOfConditions();
    CHECK(before > 0);
    std::this_thread::sleep_for(std::chrono::seconds(seconds ? std::atoi(seconds) : 2));
    CHECK(sleepsOfConditions() == before);
}
