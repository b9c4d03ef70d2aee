#pragma once

#include <expected>
#include <string>

namespace platform {

// Creates the folder and those above it with the default attributes (mode 0777 less the umask). Success when it is
// already there. The failure is an errno value.
std::expected<void, int> createFolder(const std::string& path);

} // namespace platform
