#include "platform/NotificationCenter.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace platform {

namespace {

struct Observers {
    std::vector<NotificationObserver*> present; // by their numbers
    std::uint64_t lastNumber = 0;
};

Observers& notificationObservers()
{
    static auto& shared = *new Observers; // outlives observers that end with the process
    return shared;
}

} // namespace

NotificationObserver::NotificationObserver(std::string name, std::function<void()> handler)
    : _name(std::move(name)),
      _handler(std::move(handler)),
      _number(++notificationObservers().lastNumber)
{
    notificationObservers().present.push_back(this);
}

NotificationObserver::~NotificationObserver()
{
    std::erase(notificationObservers().present, this);
}

void postNotification(const std::string& name)
{
    const auto& observers = notificationObservers();
    const auto lastNumber = observers.lastNumber;
    std::uint64_t heard = 0;
    for (;;) {
        const auto next = std::ranges::find_if(observers.present, [&](const NotificationObserver* observer) {
            return observer->_number > heard && observer->_number <= lastNumber && observer->_name == name;
        });
        if (next == observers.present.end())
            return;
        heard = (*next)->_number;
        const auto handler = (*next)->_handler; // the observer may end meanwhile
        handler();
    }
}

} // namespace platform
