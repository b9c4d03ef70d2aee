#include "platform/Localization.h"
#include "platform/macos/interface/DecimalDigits.h"

#include <doctest/doctest.h>

TEST_CASE("the value of every decimal digit of every script follows from which characters are digits")
{
    int digits = 0;
    for (char32_t character = 0; character < 0x110000; ++character) {
        const int value = platform::macos::decimalDigitValue(character, platform::isDecimalDigit);
        if (value != platform::decimalDigitValue(character))
            FAIL_CHECK("U+" << static_cast<unsigned>(character) << " is " << value);
        digits += static_cast<int>(value >= 0);
    }
    CHECK(digits >= 600);
}
