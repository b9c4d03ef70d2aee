#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// Takes the first character off the text, which must not be empty. Nothing, and nothing taken, when it is not valid
// UTF-8 (overlong forms, surrogates and values above U+10FFFF included).
std::optional<char32_t> takeCharacter(std::string_view& text);

// False, and nothing appended, for a value that is not a Unicode scalar value.
bool appendUTF8(std::string& out, char32_t character);

} // namespace platform
