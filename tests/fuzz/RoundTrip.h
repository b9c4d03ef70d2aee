#pragma once

#include "platform/Format.h"
#include "platform/PropertyListCoding.h"
#include "tests/fuzz/Require.h"

// Whatever was read can be described, and written and read back as the same value.
inline void requireRoundTrip(const platform::PropertyList& value)
{
    platform::description(value);
    const auto bytes = platform::binaryPropertyList(value);
    require(bytes.has_value());
    const auto readBack = platform::propertyListWithData(*bytes);
    require(readBack && *readBack == value);
    require(platform::binaryPropertyList(*readBack) == bytes);
}
