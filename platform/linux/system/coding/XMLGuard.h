#pragma once

#include <string_view>

namespace platform {

// Whether an XML property list can be handed to the reader: its elements nest properly, at most 512 deep, each with its
// own end, text stands only in elements that hold text, comments and the like are closed, nothing follows the root
// element, and no entity is declared.
bool isSoundXMLPropertyList(std::string_view text);

} // namespace platform
