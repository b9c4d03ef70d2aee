#pragma once

#include "platform/PropertyList.h"

#include <cstdint>
#include <optional>
#include <span>

namespace platform {

// What propertyListWithData reads, without the words for a failure, which come from a property list themselves.
std::optional<PropertyList> readPropertyList(std::span<const std::uint8_t> bytes);

} // namespace platform
