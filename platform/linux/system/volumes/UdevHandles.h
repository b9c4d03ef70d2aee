#pragma once

#include <libudev.h>
#include <memory>

namespace platform {

struct UdevDeleter {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_monitor* monitor) const { udev_monitor_unref(monitor); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
};

using Udev = std::unique_ptr<udev, UdevDeleter>;
using UdevMonitor = std::unique_ptr<udev_monitor, UdevDeleter>;
using UdevDevice = std::unique_ptr<udev_device, UdevDeleter>;

} // namespace platform
