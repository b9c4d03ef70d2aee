#pragma once

#include "platform/PowerSources.h"

#include <optional>
#include <string>

namespace platform {

// The kernel's power supplies, in files.
inline constexpr const char* PowerSupplyFolder = "/sys/class/power_supply";

// Whether the machine has a battery of its own; nothing where the kernel lists no supplies.
std::optional<bool> hasBatterySupply();

// On battery while no mains is connected and a battery of the machine's own is there.
PowerState powerStateOfSupplies();

} // namespace platform
