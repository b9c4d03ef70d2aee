#include "platform/linux/system/conditions/LidSwitch.h"

#include "platform/linux/system/conditions/SystemFiles.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <fcntl.h>
#include <linux/input.h>
#include <string_view>
#include <sys/ioctl.h>

namespace platform {

namespace {

// Hexadecimal words, the lowest last; the switches are all in that one.
bool hasSwitch(const std::string& capabilities, unsigned code)
{
    const auto last = capabilities.rfind(' ');
    const auto word = std::strtoul(capabilities.c_str() + (last == std::string::npos ? 0 : last + 1), nullptr, 16);
    return (word & (1UL << code)) != 0;
}

} // namespace

LidSwitch::LidSwitch(std::function<void()> handler) : _lids(open(SW_LID, handler)), _docks(open(SW_DOCK, handler)) { }

std::vector<LidSwitch::Switch> LidSwitch::open(unsigned code, const std::function<void()>& handler)
{
    const std::string folder = "/sys/class/input";
    std::vector<Switch> switches;
    for (const auto& name : namesInFolder(folder)) {
        if (!name.starts_with("event") || !hasSwitch(firstLine(folder + "/" + name + "/device/capabilities/sw"), code))
            continue;
        Switch opened;
        opened.device.reset(::open(("/dev/input/" + name).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
        opened.code = code;
        if (!opened.device)
            continue;
        const int device = opened.device.get();
        opened.source = ConditionsThread::shared().watchDescriptor(device, [device, handler] {
            std::array<input_event, 64> events;
            while (::read(device, events.data(), sizeof events) > 0 || errno == EINTR) { }
            handler();
        });
        switches.push_back(std::move(opened));
    }
    return switches;
}

std::optional<bool> LidSwitch::state(const std::vector<Switch>& switches)
{
    if (switches.empty())
        return std::nullopt;
    for (const auto& each : switches) {
        unsigned long bits = 0;
        if (::ioctl(each.device.get(), EVIOCGSW(sizeof bits), &bits) >= 0 && (bits & (1UL << each.code)) != 0)
            return true;
    }
    return false;
}

bool hasExternalDisplay()
{
    const std::string folder = "/sys/class/drm";
    for (const auto& name : namesInFolder(folder)) {
        // "card0-HDMI-A-1"; built-in ones are of three kinds.
        const auto hyphen = name.find('-');
        if (!name.starts_with("card") || hyphen == std::string::npos)
            continue;
        const std::string_view kind = std::string_view(name).substr(hyphen + 1);
        const bool isBuiltIn = kind.starts_with("eDP") || kind.starts_with("LVDS") || kind.starts_with("DSI");
        if (!isBuiltIn && firstLine(folder + "/" + name + "/status") == "connected")
            return true;
    }
    return false;
}

} // namespace platform
