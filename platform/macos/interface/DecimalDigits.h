#pragma once

namespace platform::macos {

// The value of a decimal digit, -1 for any other character, from nothing but which characters are digits: in every
// script they stand in order from zero, and rows that touch hold ten each.
template <class IsDigit>
int decimalDigitValue(char32_t character, IsDigit isDigit)
{
    if (!isDigit(character))
        return -1;
    char32_t first = character;
    while (first > 0 && isDigit(first - 1))
        --first;
    return static_cast<int>((character - first) % 10);
}

} // namespace platform::macos
