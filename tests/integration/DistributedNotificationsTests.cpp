#include "platform/DistributedNotifications.h"
#include "platform/linux/system/queues/MainQueue.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PrivateBus.h"

#include <chrono>
#include <doctest/doctest.h>
#include <functional>
#include <poll.h>
#include <systemd/sd-bus.h>
#include <thread>

namespace {

constexpr const char* Name = "com.zerkolin.brevane.snapshot";
constexpr const char* Path = "/com/zerkolin/brevane/notifications";
constexpr const char* Interface = "com.zerkolin.brevane.notifications";

// Serves the main queue until it holds or the time is over.
bool served(const std::function<bool()>& holds, int milliseconds = 5000)
{
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
    while (!holds() && std::chrono::steady_clock::now() < end) {
        pollfd queue = {platform::mainQueueDescriptor(), POLLIN, 0};
        if (poll(&queue, 1, 10) > 0)
            platform::serveMainQueue();
    }
    return holds();
}

// Another program's signal.
void send(const char* path, const char* interface, const char* member, const char* types, const char* text)
{
    sd_bus* bus = nullptr;
    REQUIRE(sd_bus_open_system(&bus) >= 0);
    CHECK(sd_bus_emit_signal(bus, path, interface, member, types, text) >= 0);
    sd_bus_flush(bus);
    sd_bus_unref(bus);
}

// The observer's match is on its way while this process's own posts are, so the first ones may be too early.
void postUntil(const std::function<bool()>& holds)
{
    for (int i = 0; i < 100 && !holds(); ++i) {
        CHECK(platform::postDistributedNotification(Name));
        served(holds, 50);
    }
    CHECK(holds());
}

} // namespace

TEST_CASE("a notification reaches the observers of its name, also in the process that posts it")
{
    const PrivateBus bus;
    int heard = 0;
    int others = 0;
    const platform::DistributedNotificationObserver observer(Name, [&] { ++heard; });
    const platform::DistributedNotificationObserver other("com.zerkolin.brevane.other", [&] { ++others; });
    postUntil([&] { return heard > 0; });
    CHECK(others == 0);
}

TEST_CASE("a signal of another program is heard, one of another shape is not")
{
    const PrivateBus bus;
    int heard = 0;
    const platform::DistributedNotificationObserver observer(Name, [&] { ++heard; });
    postUntil([&] { return heard > 0; });
    served([] { return false; }, 50);
    heard = 0;
    send("/elsewhere", Interface, "Posted", "s", Name);
    send(Path, "com.zerkolin.other", "Posted", "s", Name);
    send(Path, Interface, "Other", "s", Name);
    send(Path, Interface, "Posted", "o", "/not/a/string");
    CHECK_FALSE(served([&] { return heard > 0; }, 100));
    send(Path, Interface, "Posted", "s", Name);
    CHECK(served([&] { return heard == 1; }));
}

TEST_CASE("posts that were not delivered yet arrive as one")
{
    const PrivateBus bus;
    int heard = 0;
    const platform::DistributedNotificationObserver observer(Name, [&] { ++heard; });
    postUntil([&] { return heard > 0; });
    served([] { return false; }, 50);
    heard = 0;
    for (int i = 0; i < 200; ++i)
        send(Path, Interface, "Posted", "s", Name);
    std::this_thread::sleep_for(std::chrono::milliseconds(300)); // nobody serves the main queue meanwhile
    CHECK(served([&] { return heard > 0; }));
    served([] { return false; }, 100);
    CHECK(heard == 1);
}

TEST_CASE("an observer that is gone hears nothing")
{
    const PrivateBus bus;
    int heard = 0;
    int gone = 0;
    const platform::DistributedNotificationObserver observer(Name, [&] { ++heard; });
    {
        const platform::DistributedNotificationObserver shortLived(Name, [&] { ++gone; });
    }
    postUntil([&] { return heard > 0; });
    CHECK(gone == 0);
}

TEST_CASE("without a bus nothing can be posted, and observing does no harm")
{
    const EnvironmentVariable nowhere("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    const platform::DistributedNotificationObserver observer(Name, [] { });
    CHECK_FALSE(platform::postDistributedNotification(Name));
}

TEST_CASE("after the bus was gone a new observer brings the others back to hearing")
{
    PrivateBus bus;
    int heard = 0;
    const platform::DistributedNotificationObserver observer(Name, [&] { ++heard; });
    postUntil([&] { return heard > 0; });
    bus.restart();
    served([] { return false; }, 200);
    heard = 0;
    const platform::DistributedNotificationObserver next("com.zerkolin.brevane.other", [] { });
    postUntil([&] { return heard > 0; });
}
