#pragma once

#include <cstddef>

// What operator new hands out and does not get back, in bytes as the allocator rounds them. Counts between start() and
// stop() alone, since looking up the size of each block takes time that is measured elsewhere.
namespace CountedMemory {

void start();

// The most that was held beyond what was held at the start.
std::size_t stop();

} // namespace CountedMemory
