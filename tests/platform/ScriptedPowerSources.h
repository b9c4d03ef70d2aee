#pragma once

#include "platform/PowerSources.h"

#include <optional>

// The machine's battery. Any thread.
namespace scripted::power {

void reset(); // no information
void setSupportsBattery(std::optional<bool> supports);

} // namespace scripted::power
