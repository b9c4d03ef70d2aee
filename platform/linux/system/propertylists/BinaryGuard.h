#pragma once

#include <cstdint>
#include <span>

namespace platform {

// Whether a binary property list can be handed to a reader that recurses and copies shared objects: every offset,
// length and reference is in bounds, objects are of known types, keys are strings, there is no cycle, and what it
// unfolds into has at most 512 collections inside each other and a bounded number of nodes and bytes. Linear in the
// size of the input.
bool isSoundBinaryPropertyList(std::span<const std::uint8_t> bytes);

} // namespace platform
