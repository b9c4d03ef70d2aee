#pragma once

#include <cstdint>
#include <vector>

namespace platform {

using Data = std::vector<std::uint8_t>;

} // namespace platform
