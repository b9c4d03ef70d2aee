#pragma once

#include <optional>

namespace platform {

// Whether the machine can run on a battery of its own. Nothing when the system gives no information about power
// sources.
std::optional<bool> supportsBatteryPower();

} // namespace platform
