#pragma once

#include "platform/linux/system/conditions/ConditionsThread.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// When somebody last typed in terminals of text. The conditions' thread only.
class TerminalUse {
public:
    // The kernel stamps typing with a grain of 8 seconds.
    static constexpr std::chrono::seconds InUse{60};

    // Runs the handler when that may have changed.
    explicit TerminalUse(std::function<void()> handler) : _handler(std::move(handler)) { }

    // How long nobody has typed in any of them, by their names below /dev; nothing while somebody does, and where there
    // are none. Follows these from now on: a timer while they are in use, and the first key afterwards.
    std::optional<std::chrono::nanoseconds> follow(std::vector<std::string> terminals);

private:
    std::function<void()> _handler;
    std::vector<EventSource> _sources;
};

} // namespace platform
