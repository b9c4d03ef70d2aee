#pragma once

#include "platform/Error.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>

namespace platform {

// A value holds at most 512 collections inside each other, and no text in it has a NUL. Whatever else a property list
// can hold is carried through unchanged: dates that are no number, integers up to 2^64-1, UIDs.

// Writes the binary format (version bplist00). Fails with a CocoaErrorDomain error when a string is not valid UTF-8 or
// has a NUL, or the nesting is too deep.
Result<Data> binaryPropertyList(const PropertyList& value);

// Reads the binary, XML (UTF-8, UTF-16 or ISO-8859-1) or old-style text format, told apart by content. Any damage, an
// integer below -2^63 or above 2^64-1, too deep nesting, or more than one value a byte of input and a thousand (keys
// are values, and shared objects count each time) is a CocoaErrorDomain error.
Result<PropertyList> propertyListWithData(std::span<const std::uint8_t> bytes);

// Reads the binary format alone, and of `maximumValues` at most.
Result<PropertyList> binaryPropertyListWithData(std::span<const std::uint8_t> bytes,
                                                std::size_t maximumValues = std::numeric_limits<std::size_t>::max());

// Reads old-style text alone; a string table (`"key" = "value";` without outer braces) reads as a dictionary.
Result<PropertyList> propertyListWithOldStyleText(std::string_view text);

} // namespace platform
