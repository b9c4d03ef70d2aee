#pragma once

#include <string>

namespace platform {

// The file that this process runs; empty when the system does not say.
std::string programPath();
// The folder that it is in, without a trailing slash.
std::string programFolder();

} // namespace platform
