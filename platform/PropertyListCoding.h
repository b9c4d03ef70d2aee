#pragma once

#include "platform/Error.h"

#include <cstdint>
#include <span>

namespace platform {

// Writes the binary format (version bplist00). Fails with a CocoaErrorDomain error when a string is not valid
// UTF-8 or the nesting is deeper than 512.
Result<Data> binaryPropertyList(const PropertyList& value);

// Reads the binary, XML or old-style text format, told apart by content. Any damage, nesting deeper than 512 or
// a small input that would unfold into a vast value (shared objects) is a CocoaErrorDomain error.
Result<PropertyList> propertyListWithData(std::span<const std::uint8_t> bytes);

// Reads old-style text alone; a string table (`"key" = "value";` without outer braces) reads as a dictionary.
Result<PropertyList> propertyListWithOldStyleText(std::string_view text);

} // namespace platform
