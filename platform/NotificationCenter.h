#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace platform {

// Notifications within the process, by name. Main thread only.

// Runs the handler for every notification of the name that is posted while it lives.
class NotificationObserver {
public:
    NotificationObserver(std::string name, std::function<void()> handler);
    ~NotificationObserver();
    NotificationObserver(const NotificationObserver&) = delete;
    NotificationObserver& operator=(const NotificationObserver&) = delete;

private:
    friend void postNotification(const std::string& name);

    std::string _name;
    std::function<void()> _handler;
    std::uint64_t _number; // counts up, and is never used again
};

// Returns when every observer of the name has run, in the order in which they were made. A handler may end observers
// and make new ones; those do not hear this notification anymore.
void postNotification(const std::string& name);

} // namespace platform
