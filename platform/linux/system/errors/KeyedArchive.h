#pragma once

#include <cstddef>
#include <cstdint>

namespace platform {

// How the keyed archiver lays values out: a table of objects that refer to each other by index. The first object
// stands for nothing, the top names the root, and an object of a class is a dictionary that refers to it.
namespace KeyedArchive {

inline constexpr const char* archiver = "NSKeyedArchiver";
inline constexpr std::int64_t version = 100000;
inline constexpr const char* nothing = "$null";

// Values inside each other in an error's user info.
inline constexpr int maximumDepth = 64;

// All errors of an archive together.
inline constexpr std::size_t maximumErrors = 1000;

} // namespace KeyedArchive

} // namespace platform
