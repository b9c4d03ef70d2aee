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
    constexpr std::size_t most = std::size_t{16} << 20;
    return std::min(64 * (inputSize + 1024), most + 4 * inputSize);
}

} // namespace PropertyListLimits

} // namespace platform
