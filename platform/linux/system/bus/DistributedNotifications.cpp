#include "platform/DistributedNotifications.h"

#include "platform/linux/system/bus/SystemBus.h"
#include "platform/ObserverList.h"
#include "platform/Queue.h"

#include <set>

namespace platform {

namespace {

constexpr SystemBus::Signal PostedSignal{"/com/zerkolin/brevane/notifications", "com.zerkolin.brevane.notifications",
                                         "Posted"};

// Listens on the bus from the first observer on.
class DistributedCenter {
public:
    ObserverList<std::string> observers; // main thread

    void listen();

private:
    void didReceive(const std::string& name);
    void didLoseBus();

    std::mutex _mutex; // of what the bus's threads see too
    std::shared_ptr<SystemBus::Watch> _watch;
    std::set<std::string> _undelivered;
};

void DistributedCenter::listen()
{
    {
        const std::lock_guard lock(_mutex);
        if (_watch)
            return;
    }
    const auto bus = SystemBus::current();
    if (!bus)
        return;
    auto watch = bus->watchSignal(
        PostedSignal, [this](const std::string& name) { didReceive(name); },
        [this](SystemBus::Change) { didLoseBus(); });
    const std::lock_guard lock(_mutex);
    _watch = std::move(watch);
}

void DistributedCenter::didReceive(const std::string& name)
{
    {
        const std::lock_guard lock(_mutex);
        if (!_undelivered.insert(name).second)
            return;
    }
    Queue::main()->async([this, name] {
        {
            const std::lock_guard lock(_mutex);
            _undelivered.erase(name);
        }
        observers.tell(name);
    });
}

// A bus that was restarted is there again at once, or else when the next observer is added.
void DistributedCenter::didLoseBus()
{
    {
        const std::lock_guard lock(_mutex);
        _watch.reset();
    }
    Queue::main()->async([this] { listen(); });
}

DistributedCenter& distributedCenter()
{
    static auto& center = *new DistributedCenter; // the bus's threads may outlive main()
    return center;
}

} // namespace

DistributedNotificationObserver::DistributedNotificationObserver(const std::string& name, std::function<void()> handler)
{
    auto& center = distributedCenter();
    center.observers.add(this, [name, handler = std::move(handler)](const std::string& posted) {
        if (posted == name)
            handler();
    });
    center.listen();
}

DistributedNotificationObserver::~DistributedNotificationObserver()
{
    distributedCenter().observers.remove(this);
}

bool postDistributedNotification(const std::string& name)
{
    const auto bus = SystemBus::current();
    return bus && bus->send([&](sd_bus* sender, sd_bus_message** message) {
        const int result =
            sd_bus_message_new_signal(sender, message, PostedSignal.path, PostedSignal.interface, PostedSignal.member);
        return result < 0 ? result : sd_bus_message_append(*message, "s", name.c_str());
    });
}

} // namespace platform
