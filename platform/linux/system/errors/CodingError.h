#pragma once

#include "platform/Error.h"

#include <string_view>

namespace platform {

// What the platform calls a property list that cannot be read, or a value that cannot be written as one. `detail` is a
// sentence for people.
Error corruptPropertyListError(std::string_view detail);
Error unwritablePropertyListError(std::string_view detail);

} // namespace platform
