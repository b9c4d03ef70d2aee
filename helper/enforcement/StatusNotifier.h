#pragma once

#include "platform/Clock.h"

#include <memory>
#include <string>

namespace helper {

// Tells other programs that something has changed, at once and then at most every 300 milliseconds. For one serial
// queue.
class StatusNotifier {
public:
    StatusNotifier(std::string name, std::shared_ptr<platform::Queue> queue);

    void changed();

private:
    void tell();

    const std::string _name;
    std::unique_ptr<platform::ClockTimer> _timer;
    std::optional<std::chrono::nanoseconds> _told; // since the machine was started
    bool _isWaiting = false;
};

} // namespace helper
