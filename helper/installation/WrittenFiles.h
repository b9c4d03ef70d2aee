#pragma once

#include <string>
#include <vector>

// The files below the root that this program itself has written: settings, rights, logs, and what is kept of damaged
// ones. Whole paths.
std::vector<std::string> writtenFiles();
