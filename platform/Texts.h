#pragma once

#include "platform/PropertyList.h"

#include <string>
#include <string_view>
#include <vector>

// The texts in a property list, for readers to whom what is missing or of another type is absent.
namespace platform {

// Empty when the key has no text.
std::string textForKey(const Dictionary& dictionary, std::string_view key);

// The texts among the elements, in their order; none when there is no array.
std::vector<std::string> textsOf(const Array* array);

Array arrayOf(const std::vector<std::string>& texts);

} // namespace platform
