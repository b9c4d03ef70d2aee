#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace platform {

// The process that has the connection of this unique name on the system bus; nothing when it is gone. A courtesy, never
// a proof: processes may reuse the number.
std::optional<std::uint32_t> processOfBusPeer(const std::string& uniqueName);

} // namespace platform
