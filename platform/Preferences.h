#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>

namespace platform {

// A value of another program's preferences, for any user and the current host. nullopt when it is absent or the
// preferences cannot be read.
std::optional<PropertyList> preferenceValue(const std::string& key, const std::string& domain);

} // namespace platform
