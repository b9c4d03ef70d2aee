#pragma once

#include "platform/Error.h"

#include <string>

namespace helper {

// An error of the system's domain: a sentence that says what could not be done, and the system's text for the code.
platform::Error systemError(int code, const std::string& sentence);

} // namespace helper
