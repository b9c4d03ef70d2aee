#include "tests/platform/ScriptedNotifications.h"

#include "platform/ObserverList.h"

namespace scripted::notifications {

namespace {

struct Exchange {
    platform::ObserverList<std::string> observers;
    std::vector<std::string> posted;
};

Exchange& exchange()
{
    static Exchange& shared = *new Exchange;
    return shared;
}

} // namespace

void reset()
{
    exchange().posted.clear();
}

void arrive(const std::string& name)
{
    exchange().observers.tell(name);
}

std::vector<std::string> posted()
{
    return exchange().posted;
}

} // namespace scripted::notifications

namespace platform {

using scripted::notifications::exchange;

DistributedNotificationObserver::DistributedNotificationObserver(const std::string& name, std::function<void()> handler)
{
    exchange().observers.add(this, [name, handler = std::move(handler)](const std::string& posted) {
        if (posted == name)
            handler();
    });
}

DistributedNotificationObserver::~DistributedNotificationObserver()
{
    exchange().observers.remove(this);
}

bool postDistributedNotification(const std::string& name)
{
    exchange().posted.push_back(name);
    return true;
}

} // namespace platform
