#pragma once

#include <cstdint>

namespace platform {

// How the keyed archiver lays values out: a table of objects that refer to each other by index. The first object
// stands for nothing, the top names the root, and an object of a class is a dictionary that refers to it.
namespace KeyedArchive {

inline constexpr const char* archiver = "NSKeyedArchiver";
inline constexpr std::int64_t version = 100000;
inline constexpr const char* nothing = "$null";

// Objects inside each other, the root included.
inline constexpr int maximumDepth = 64;

} // namespace KeyedArchive

} // namespace platform
