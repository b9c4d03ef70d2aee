#pragma once

#include <string>
#include <string_view>

namespace platform {

// The text with every byte that is not part of valid UTF-8 replaced by U+FFFD.
std::string validUTF8(std::string_view text);

// Appends the text as a JSON string with its quotation marks. Any bytes; those that are not valid UTF-8 become U+FFFD.
void appendJsonString(std::string& out, std::string_view text);

} // namespace platform
