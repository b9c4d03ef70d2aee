#include "platform/SleepInhibitor.h"
#include "platform/SleepPreventers.h"
#include "tests/conditions/Following.h"
#include "tests/conditions/MockService.h"
#include "tests/support/PrivateBus.h"

#include <doctest/doctest.h>
#include <unistd.h>

using platform::SleepPreventers;

namespace {

std::string inhibitor(const std::string& what, const std::string& who, const std::string& mode = "block",
                      pid_t process = 4'000'000)
{
    return "('" + what + "', '" + who + "', 'why', '" + mode + "', 1000, " + std::to_string(process) + ")";
}

void setInhibitors(const MockService& service, const std::string& list)
{
    service.setAnswer("ListInhibitors", "", "a(ssssuu)", "dbus.Array([" + list + "], signature='(ssssuu)')");
    service.setProperty("BlockInhibited", "s", "sleep");
}

} // namespace

TEST_CASE("programs that block sleep or idleness prevent sleep, until they end")
{
    PrivateBus bus;
    const auto service = MockService::login();
    Following<SleepPreventers> preventers(platform::followSleepPreventers);
    CHECK(preventers.current() == SleepPreventers{true, {}});
    setInhibitors(service, inhibitor("sleep", "Film"));
    CHECK(preventers.becomes(SleepPreventers{true, {"Film"}}));
    setInhibitors(service,
                  inhibitor("shutdown:sleep", "Upgrade") + "," + inhibitor("idle", "Film") + ","
                      + inhibitor("idle:sleep", "Film"));
    CHECK(preventers.becomes(SleepPreventers{true, {"Film", "Upgrade"}}));
    setInhibitors(service, "");
    CHECK(preventers.becomes(SleepPreventers{true, {}}));
}

TEST_CASE("what only delays sleep, blocks other things, or is this program's own, prevents nothing")
{
    PrivateBus bus;
    const auto service = MockService::login();
    Following<SleepPreventers> preventers(platform::followSleepPreventers);
    setInhibitors(service,
                  inhibitor("sleep", "Delay", "delay") + "," + inhibitor("shutdown:handle-lid-switch", "Other") + ","
                      + inhibitor("sleepy", "Odd") + "," + inhibitor("sleep", "Ours", "block", getpid()) + ","
                      + inhibitor("sleep", "Theirs"));
    CHECK(preventers.becomes(SleepPreventers{true, {"Theirs"}}));
}

TEST_CASE("without a login manager nothing is known to prevent sleep")
{
    PrivateBus bus;
    CHECK(Following<SleepPreventers>(platform::followSleepPreventers).current() == SleepPreventers{});
}

TEST_CASE("a handler does not run any more once its object has gone")
{
    PrivateBus bus;
    const auto service = MockService::login();
    const auto queue = platform::Queue::createSerial("test");
    const auto tellings = std::make_shared<Tellings>();
    auto condition = platform::followSleepPreventers(queue, [tellings] { tellings->add(); });
    Following<SleepPreventers> other(platform::followSleepPreventers);
    queue->sync([&] {
        setInhibitors(service, inhibitor("sleep", "Film"));
        CHECK(other.becomes(SleepPreventers{true, {"Film"}}));
        condition.reset();
    });
    queue->sync([] { });
    CHECK(tellings->count() == 0);
}

TEST_CASE("the computer is kept awake for as long as the inhibitor lives")
{
    PrivateBus bus;
    const auto service = MockService::login();
    Following<SleepPreventers> preventers(platform::followSleepPreventers);
    auto inhibitor = platform::SleepInhibitor::create("A backup is running.");
    REQUIRE(inhibitor);
    service.setProperty("BlockInhibited", "s", "sleep");
    // The stand-in knows it by a process of its own.
    CHECK(preventers.becomes(SleepPreventers{true, {"Brevane"}}));
    inhibitor->reset();
    const auto isGone = [](const SleepPreventers& value) { return value.names.empty(); };
    for (int attempt = 0; attempt < 100 && !isGone(preventers.current()); ++attempt) {
        service.setProperty("BlockInhibited", "s", "");
        usleep(20'000);
    }
    CHECK(isGone(preventers.current()));
}

TEST_CASE("an inhibitor that nobody gives is an error")
{
    PrivateBus bus;
    CHECK_FALSE(platform::SleepInhibitor::create("A backup is running."));
}
