#include "platform/linux/system/conditions/PowerSupplies.h"

#include "platform/linux/system/conditions/SystemFiles.h"
#include "platform/SystemInformation.h"

namespace platform {

namespace {

struct Supplies {
    bool hasBattery = false;
    bool isDischarging = false; // a battery
    bool hasMains = false;
    bool isConnected = false; // a mains
};

std::optional<Supplies> readSupplies()
{
    const auto folder = machinePath(PowerSupplyFolder);
    if (!fileExists(folder))
        return std::nullopt;
    Supplies supplies;
    for (const auto& name : namesInFolder(folder)) {
        const auto supply = folder + "/" + name;
        const auto type = firstLine(supply + "/type");
        // The scope "Device" is the battery of a mouse or a headset.
        if (firstLine(supply + "/scope") == "Device")
            continue;
        if (type == "Battery") {
            supplies.hasBattery = true;
            supplies.isDischarging = supplies.isDischarging || firstLine(supply + "/status") == "Discharging";
        } else if (type == "Mains" || type.starts_with("USB")) {
            supplies.hasMains = true;
            supplies.isConnected = supplies.isConnected || (firstLine(supply + "/online").find_first_of("12") == 0);
        }
    }
    return supplies;
}

} // namespace

std::optional<bool> hasBatterySupply()
{
    const auto supplies = readSupplies();
    return supplies ? std::optional(supplies->hasBattery) : std::nullopt;
}

PowerState powerStateOfSupplies()
{
    const auto supplies = readSupplies();
    if (!supplies)
        return {};
    // Where no mains tells whether it is connected, the battery tells.
    const bool isWithout = supplies->hasMains ? !supplies->isConnected : supplies->isDischarging;
    return {.isKnown = true, .onBattery = supplies->hasBattery && isWithout};
}

} // namespace platform
