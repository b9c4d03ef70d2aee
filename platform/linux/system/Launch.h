#pragma once

#include <string>
#include <vector>

namespace platform {

// Starts a program, found along PATH, that outlives this one and is not waited for. No shell is involved. False when
// it cannot be started.
bool launch(const std::vector<std::string>& command);

} // namespace platform
