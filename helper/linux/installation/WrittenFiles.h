#pragma once

#include <string>
#include <vector>

namespace helper {

// The files below the root that the product has written since it was installed: settings, rights, what is kept of
// damaged ones, and the logs of its programs that ran as root. Whole paths.
std::vector<std::string> writtenFiles();

} // namespace helper
