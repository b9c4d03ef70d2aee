#pragma once

#include "platform/Preferences.h"

#include <optional>
#include <string>

// Other programs' preferences. Any thread.
namespace scripted::preferences {

void reset(); // none
void set(const std::string& key, const std::string& domain, std::optional<platform::PropertyList> value);

} // namespace scripted::preferences
