#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>
#include <string_view>

namespace platform {

// What separates words in XML.
inline constexpr std::string_view xmlWhiteSpace = " \t\r\n";

// The values in the text of an XML property list's elements. nullopt when the text is not wholly of the kind; white
// space around it is allowed.

// Decimal or 0x hexadecimal, in the range of 64 bits with a sign.
std::optional<PropertyList> integerOfXML(std::string_view text);

std::optional<PropertyList> realOfXML(const std::string& text);

// 2001-01-01T00:00:00Z
std::optional<PropertyList> dateOfXML(std::string_view text);

// Base 64, white space anywhere.
std::optional<PropertyList> dataOfXML(std::string_view text);

// What stands between "&" and ";". 0 for an entity that XML itself doesn't have.
char32_t characterOfEntity(std::string_view entity);

} // namespace platform
