#pragma once

#include <string>
#include <string_view>

namespace helper {

// "name.service": a service, and no template's instance, whose name would be an argument.
bool isBackupUnitName(std::string_view name);

// What the service manager says of a unit, one property a line as in "Type=oneshot".
std::string descriptionOfUnit(const std::string& name);

// Whether a unit may be started as a backup, by what the service manager says of it. One that runs to its end, and is
// no part of how the system starts, stops or is repaired.
bool isBackupUnit(std::string_view description);

} // namespace helper
