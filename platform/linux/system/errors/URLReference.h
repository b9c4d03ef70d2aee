#pragma once

#include <string>
#include <string_view>

namespace platform {

// The absolute URL of a reference relative to a base (RFC 3986, section 5.2). The reference itself when it has a scheme
// or the base has none.
std::string absoluteURL(std::string_view reference, std::string_view base);

} // namespace platform
