#pragma once

#include <string>
#include <string_view>

namespace platform::macos {

// A title without the mark for a key that other systems have: "&File" is "File", "ファイル(&F)" is "ファイル" and "A &&
// B" is "A & B".
std::string plainTitle(std::string_view marked);

} // namespace platform::macos
