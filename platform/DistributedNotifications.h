#pragma once

#include <functional>
#include <string>

namespace platform {

// What programs tell each other on this machine: a name and nothing else. Anyone can post any name.

// Runs the handler on the main thread for every notification of the name that arrives while it lives. Several posts
// that were not delivered yet may arrive as one. Main thread only.
class DistributedNotificationObserver {
public:
    DistributedNotificationObserver(const std::string& name, std::function<void()> handler);
    ~DistributedNotificationObserver();
    DistributedNotificationObserver(const DistributedNotificationObserver&) = delete;
    DistributedNotificationObserver& operator=(const DistributedNotificationObserver&) = delete;
};

// Any thread. False when it could not be handed over. This process's own observers hear it too.
bool postDistributedNotification(const std::string& name);

} // namespace platform
