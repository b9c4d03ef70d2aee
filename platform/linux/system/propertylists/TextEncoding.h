#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace platform {

// What a file in UTF-8 may begin with.
inline constexpr std::string_view utf8ByteOrderMark = "\xEF\xBB\xBF";

// UTF-16 as UTF-8. Nullopt when a byte or half of a surrogate pair is left over.
std::optional<std::string> utf8OfUTF16(std::span<const std::uint8_t> bytes, bool isBigEndian);

// A text file as UTF-8, without a byte-order mark: UTF-16 by its mark or by the first sign of an XML document,
// ISO-8859-1 when an XML declaration says so, otherwise UTF-8. Nullopt when it is not valid in its encoding, has a NUL,
// or declares an encoding that is not read.
std::optional<std::string> utf8OfText(std::span<const std::uint8_t> bytes);

} // namespace platform
