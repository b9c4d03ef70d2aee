#pragma once

#include "platform/Error.h"

#include <cstdint>
#include <span>

namespace platform {

// A value holds at most 512 collections inside each other, and no text in it has a NUL.

// Writes the binary format (version bplist00). Fails with a CocoaErrorDomain error when a string is not valid UTF-8 or
// has a NUL, a date is no finite number, or the nesting is too deep.
Result<Data> binaryPropertyList(const PropertyList& value);

// Reads the binary, XML or old-style text format, told apart by content. Any damage, an integer that doesn't fit into
// 64 bits with a sign, too deep nesting or a small input that would unfold into a vast value (shared objects) is a
// CocoaErrorDomain error.
Result<PropertyList> propertyListWithData(std::span<const std::uint8_t> bytes);

// Reads old-style text alone; a string table (`"key" = "value";` without outer braces) reads as a dictionary.
Result<PropertyList> propertyListWithOldStyleText(std::string_view text);

} // namespace platform
