#include "platform/Clock.h"
#include "platform/Queue.h"
#include "tests/conditions/Following.h"
#include "tests/conditions/MockService.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <doctest/doctest.h>
#include <filesystem>
#include <unistd.h>
#include <vector>

using platform::ClockEvent;
using platform::ClockTimer;
using namespace std::chrono_literals;

namespace {

class Events {
public:
    Events()
        : _watch(platform::ClockWatch::create(platform::Queue::createSerial("test"), [this](ClockEvent event) {
              const std::lock_guard lock(_mutex);
              _events.push_back(event);
              _changed.notify_all();
          }))
    {
    }
    bool come(const std::vector<ClockEvent>& expected)
    {
        const bool countsSetting = std::ranges::find(expected, ClockEvent::Set) != expected.end();
        std::unique_lock lock(_mutex);
        const auto counted = [&] {
            auto events = _events;
            if (!countsSetting)
                std::erase(events, ClockEvent::Set); // the machine's clock is set by another test, too
            return events;
        };
        _changed.wait_for(lock, 10s, [&] { return counted().size() >= expected.size(); });
        return counted() == expected;
    }

private:
    std::mutex _mutex;
    std::condition_variable _changed;
    std::vector<ClockEvent> _events;
    std::unique_ptr<platform::ClockWatch> _watch; // ends first
};

struct ZoneFixture {
    ZoneFixture()
    {
        std::filesystem::create_directory(root.file("etc"));
        setZone("/usr/share/zoneinfo/Europe/Berlin");
    }
    // As the system does it: a link beside, renamed.
    void setZone(const std::string& target) const
    {
        std::filesystem::create_symlink(target, root.file("etc/.new"));
        std::filesystem::rename(root.file("etc/.new"), root.file("etc/localtime"));
    }
    TemporaryDirectory root;
    EnvironmentVariable variable{"BREVANE_ROOT", root.path()};
};

} // namespace

TEST_CASE("sleep counts as time since boot and not as time awake")
{
    const auto now = platform::readClocks();
    CHECK(now.sinceBoot >= now.awake);
    CHECK(now.awake > 0s);
    CHECK(now.sinceEpoch > now.sinceBoot);
    CHECK(platform::readClocks().sinceBoot >= now.sinceBoot);
}

TEST_CASE_FIXTURE(ZoneFixture, "the zone is the one that the system's link names")
{
    CHECK(platform::timeZoneName() == "Europe/Berlin");
    setZone("../usr/share/zoneinfo/America/Argentina/Ushuaia");
    CHECK(platform::timeZoneName() == "America/Argentina/Ushuaia");
    std::filesystem::remove(root.file("etc/localtime"));
    root.write("etc/localtime", "TZif2");
    CHECK(platform::timeZoneName() == "UTC");
    root.write("etc/timezone", "Asia/Kathmandu\n");
    CHECK(platform::timeZoneName() == "Asia/Kathmandu");
}

TEST_CASE_FIXTURE(ZoneFixture, "another zone is told, the same one and other files are not")
{
    Events events;
    root.write("etc/hosts", "127.0.0.1 localhost\n");
    setZone("../usr/share/zoneinfo/Europe/Berlin");
    setZone("/usr/share/zoneinfo/Australia/Lord_Howe");
    CHECK(events.come({ClockEvent::ZoneChanged}));
    setZone("/usr/share/zoneinfo/Europe/Berlin");
    CHECK(events.come({ClockEvent::ZoneChanged, ClockEvent::ZoneChanged}));
}

TEST_CASE("sleep and waking are told as the login manager does")
{
    PrivateBus bus;
    const auto service = MockService::login();
    Events events;
    usleep(200'000); // its watch is made without waiting
    service.emit("PrepareForSleep", true);
    CHECK(events.come({ClockEvent::WillSleep}));
    service.emit("PrepareForSleep", false);
    CHECK(events.come({ClockEvent::WillSleep, ClockEvent::DidWake}));
}

TEST_CASE("a clock that is set is told")
{
    Events events;
    // To what it shows anyway.
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    if (clock_settime(CLOCK_REALTIME, &now) != 0) {
        std::puts("SKIPPED: this process may not set the clock");
        return;
    }
    CHECK(events.come({ClockEvent::Set}));
}

TEST_CASE("a timer fires at its moment of either clock, and not before")
{
    for (const auto clock : {ClockTimer::Clock::SinceEpoch, ClockTimer::Clock::SinceBoot}) {
        const auto read = [clock] {
            const auto now = platform::readClocks();
            return clock == ClockTimer::Clock::SinceEpoch ? now.sinceEpoch : now.sinceBoot;
        };
        Tellings tellings;
        std::chrono::nanoseconds fired{0};
        const auto queue = platform::Queue::createSerial("test");
        const auto timer = ClockTimer::create(clock, queue, [&] {
            fired = read();
            tellings.add();
        });
        const auto moment = read() + 200ms;
        timer->set(moment);
        CHECK(tellings.waitForMoreUntil([&] { return fired > 0s; }));
        CHECK(fired >= moment);
        timer->set(read() - 3600s);
        CHECK(tellings.waitForMoreUntil([] { return true; }));
        timer->set(read() + 200ms);
        timer->set(std::nullopt);
        usleep(400'000);
        CHECK(tellings.count() == 2);
        queue->sync([] { });
    }
}
