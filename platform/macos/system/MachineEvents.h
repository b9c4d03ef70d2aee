#pragma once

#include <dispatch/dispatch.h>
#include <functional>

namespace platform {

// Where the system's events about the machine arrive: a serial queue of their own, never ended.
dispatch_queue_t machineEventsQueue();

// Runs the handler on that queue whenever the system posts the notification, while it lives.
class NotifyRegistration {
public:
    NotifyRegistration(const char* name, std::function<void()> handler);
    ~NotifyRegistration();
    NotifyRegistration(const NotifyRegistration&) = delete;
    NotifyRegistration& operator=(const NotifyRegistration&) = delete;

private:
    int _token = -1;
};

} // namespace platform
