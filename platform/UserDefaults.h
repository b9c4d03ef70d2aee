#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>

namespace platform {

// What the application remembers for its user from one run to the next: the standard user defaults of the domain
// "com.zerkolin.brevane.application". Main thread only.

// nullopt when it is absent or cannot be read.
std::optional<PropertyList> userDefault(const std::string& key);
// Absent counts as false.
bool userDefaultBool(const std::string& key);

// False when it could not be kept.
bool setUserDefault(const std::string& key, const PropertyList& value);
// Forgets the whole domain, and keeps nothing in it any more until the process ends: windows that close later must not
// bring it back. False when it is still there.
bool removeUserDefaults();

} // namespace platform
