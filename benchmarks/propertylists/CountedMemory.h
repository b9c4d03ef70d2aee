#pragma once

#include <cstddef>

// What operator new has handed out and not got back, in bytes as the allocator rounds them.
namespace CountedMemory {

// Counts anew from what is held now.
void restart();

// The most that was held beyond that since.
std::size_t peak();

} // namespace CountedMemory
