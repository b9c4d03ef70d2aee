#include "platform/linux/system/conditions/DeviceEvents.h"

#include "platform/SystemInformation.h"

namespace platform {

DeviceEvents::DeviceEvents(std::initializer_list<const char*> subsystems, std::function<void()> handler)
{
    if (!_context)
        return;
    // The daemon's events are filtered in the kernel; the kernel's own are there without a daemon too.
    _monitor.reset(udev_monitor_new_from_netlink(_context.get(), fileExists("/run/udev/control") ? "udev" : "kernel"));
    if (!_monitor)
        return;
    for (const char* const subsystem : subsystems)
        udev_monitor_filter_add_match_subsystem_devtype(_monitor.get(), subsystem, nullptr);
    if (udev_monitor_enable_receiving(_monitor.get()) < 0)
        return;
    _source = ConditionsThread::shared().watchDescriptor(udev_monitor_get_fd(_monitor.get()),
                                                         [this, handler = std::move(handler)] { receive(handler); });
}

void DeviceEvents::receive(const std::function<void()>& handler)
{
    bool any = false;
    while (UdevDevice(udev_monitor_receive_device(_monitor.get())))
        any = true;
    if (any)
        handler();
}

} // namespace platform
