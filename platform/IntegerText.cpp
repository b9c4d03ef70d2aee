#include "platform/IntegerText.h"

#include "platform/Localization.h"
#include "platform/Unicode.h"

#include <limits>

namespace platform {

namespace {

bool isWhiteSpace(char32_t character)
{
    return (character >= 0x09 && character <= 0x0D) || character == 0x20 || character == 0x85 || character == 0xA0
        || character == 0x1680 || (character >= 0x2000 && character <= 0x200A) || character == 0x2028
        || character == 0x2029 || character == 0x202F || character == 0x205F || character == 0x3000;
}

} // namespace

std::int64_t integerOfText(std::string_view text)
{
    char32_t character = takeCharacter(text);
    while (isWhiteSpace(character))
        character = takeCharacter(text);
    const bool negative = character == U'-';
    if (negative || character == U'+')
        character = takeCharacter(text);
    // Counted downwards, where there is room for one more.
    constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
    std::int64_t value = 0;
    for (int digit = decimalDigitValue(character); digit >= 0; digit = decimalDigitValue(takeCharacter(text))) {
        if (__builtin_mul_overflow(value, 10, &value) || __builtin_sub_overflow(value, digit, &value)) {
            value = lowest;
            break;
        }
    }
    if (negative)
        return value;
    return value == lowest ? std::numeric_limits<std::int64_t>::max() : -value;
}

} // namespace platform
