#pragma once

#include <string_view>

namespace platform {

// Whether the text is an absolute URL: a scheme, a colon and something after it, in the characters that a URL may have,
// with whole percent escapes.
bool formsURL(std::string_view text);

} // namespace platform
