#pragma once

#include <algorithm>
#include <cstddef>

namespace platform {

// What an input may unfold into, so that its reader takes time and memory in proportion to its size.
namespace PropertyListLimits {

inline constexpr int depth = 512; // collections inside each other

// Values, keys among them; shared ones count each time. Only shared objects can be more than the bytes are.
constexpr std::size_t values(std::size_t inputSize)
{
    constexpr std::size_t most = 10'000'000;
    return std::min(inputSize + 1000, most);
}

// Bytes of text and data.
constexpr std::size_t content(std::size_t inputSize)
{
    constexpr std::size_t most = std::size_t{256} << 20;
    return std::min(64 * (inputSize + 1024), most);
}

// The longest text, in bytes, that a writer may write once for several places: each of them is at least a byte and
// unfolds into 64 at the most, in UTF-16, so that what is written can be read.
inline constexpr std::size_t sharedText = 32;

} // namespace PropertyListLimits

} // namespace platform
