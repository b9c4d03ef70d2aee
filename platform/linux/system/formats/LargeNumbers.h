#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// JSON sets no limit to numbers, the parser that of 64 bits. The text with each number that is beyond it in quotation
// marks, so that its digits are kept as they are; nothing when there is none.
std::optional<std::string> quoteLargeNumbers(std::string_view json);

} // namespace platform
