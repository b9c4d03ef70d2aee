#pragma once

#include <optional>

namespace helper {

// "--simulate FILE": prints what the helper would do by the script in the property list, one JSON object a line. The
// exit status; nullopt when the arguments ask for something else.
std::optional<int> runSimulationCommand(int count, const char* const* arguments);

} // namespace helper
