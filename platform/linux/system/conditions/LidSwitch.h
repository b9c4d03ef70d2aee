#pragma once

#include "platform/FileDescriptor.h"
#include "platform/linux/system/conditions/ConditionsThread.h"

#include <functional>
#include <optional>
#include <vector>

namespace platform {

// The machine's lid and dock, by the kernel's switches. The conditions' thread only.
class LidSwitch {
public:
    // Runs the handler when a switch changes.
    explicit LidSwitch(std::function<void()> handler);

    // Nothing on a machine without a lid, or one that this process may not look at.
    std::optional<bool> isLidClosed() const { return state(_lids); }
    bool isDocked() const { return state(_docks).value_or(false); }

private:
    struct Switch {
        FileDescriptor device;
        unsigned code = 0;
        EventSource source;
    };
    static std::optional<bool> state(const std::vector<Switch>& switches);
    static std::vector<Switch> open(unsigned code, const std::function<void()>& handler);

    std::vector<Switch> _lids;
    std::vector<Switch> _docks;
};

// Whether a display is connected that is not built into the machine.
bool hasExternalDisplay();

} // namespace platform
