#pragma once

#include "platform/linux/system/conditions/ConditionsThread.h"
#include "platform/linux/system/volumes/UdevHandles.h"

#include <functional>
#include <initializer_list>

namespace platform {

// Runs the handler when the kernel tells of a device of one of the subsystems. The conditions' thread only.
class DeviceEvents {
public:
    DeviceEvents(std::initializer_list<const char*> subsystems, std::function<void()> handler);

private:
    void receive(const std::function<void()>& handler);

    Udev _context{udev_new()};
    UdevMonitor _monitor;
    EventSource _source;
};

} // namespace platform
