#pragma once

#include <cstdint>
#include <string_view>

namespace platform {

// The integer that a text (UTF-8) begins with: white space, one sign, decimal digits of any script. 0 when there are no
// digits; held in the range of the result.
std::int64_t integerOfText(std::string_view text);

} // namespace platform
