#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

inline constexpr char32_t replacementCharacter = 0xFFFD;
inline constexpr char32_t endOfText = 0xFFFFFFFF;

bool isValidUTF8(std::string_view text);

// Takes the first character off `text`: endOfText when it is empty, the replacement character for a byte that
// begins no valid sequence.
char32_t takeCharacter(std::string_view& text);

// False, with nothing appended, when the value is a surrogate or above 0x10FFFF.
bool appendCharacter(std::string& text, char32_t character);

// Valid text of at most so many bytes, cut between characters; what was cut shows as an ellipsis after it.
inline std::string shortened(std::string_view text, std::size_t size)
{
    if (text.size() <= size)
        return std::string(text);
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80)
        --size;
    return std::string(text.substr(0, size)).append("\u2026");
}

inline bool isHighSurrogate(char32_t unit)
{
    return unit >= 0xD800 && unit < 0xDC00;
}

inline bool isLowSurrogate(char32_t unit)
{
    return unit >= 0xDC00 && unit < 0xE000;
}

// Of a character from 0x10000 on.
inline char16_t highSurrogateOf(char32_t character)
{
    return static_cast<char16_t>(0xD800 + ((character - 0x10000) >> 10));
}

inline char16_t lowSurrogateOf(char32_t character)
{
    return static_cast<char16_t>(0xDC00 + ((character - 0x10000) & 0x3FF));
}

inline char32_t characterOfSurrogates(char32_t high, char32_t low)
{
    return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

} // namespace platform
