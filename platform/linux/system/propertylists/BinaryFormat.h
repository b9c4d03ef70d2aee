#pragma once

#include <cstddef>
#include <string_view>

namespace platform {

// The binary property list: a header, the objects, a table of their offsets, and a trailer of six zero bytes, the
// width of an offset, the width of a reference, and in eight bytes each the number of objects, the root's number and
// the table's offset. All numbers are big-endian.
namespace BinaryFormat {

inline constexpr std::string_view header = "bplist00";
inline constexpr std::size_t trailerSize = 32;

} // namespace BinaryFormat

// The kinds of object, in the upper half of an object's first byte. The lower half is a count, the power of two of a
// width, or the value itself.
namespace BinaryMarker {

inline constexpr unsigned Simple = 0x0;
inline constexpr unsigned Integer = 0x1;
inline constexpr unsigned Real = 0x2;
inline constexpr unsigned Date = 0x3;
inline constexpr unsigned Data = 0x4;
inline constexpr unsigned ASCII = 0x5;
inline constexpr unsigned UTF16 = 0x6;
inline constexpr unsigned UID = 0x8;
inline constexpr unsigned Array = 0xA;
inline constexpr unsigned Dictionary = 0xD;

inline constexpr std::size_t falseValue = 8;
inline constexpr std::size_t trueValue = 9;
inline constexpr std::size_t countFollows = 15;

} // namespace BinaryMarker

} // namespace platform
