#include "platform/IntegerText.h"

#include <doctest/doctest.h>
#include <limits>

using platform::integerOfText;

TEST_CASE("a text begins with an integer: white space, a sign, digits")
{
    CHECK(integerOfText("42") == 42);
    CHECK(integerOfText("  \t\n42 hours") == 42);
    CHECK(integerOfText("\u00A0\u30007") == 7);
    CHECK(integerOfText("+5") == 5);
    CHECK(integerOfText("-5") == -5);
    CHECK(integerOfText("007") == 7);
    CHECK(integerOfText("12.9") == 12);
}

TEST_CASE("a text that begins with anything else is 0")
{
    for (const char* const text : {"", " ", "x1", "+", "-", "- 5", "+-5", "--5",
                                   "\xFF"
                                   "7",
                                   "½"}) {
        INFO(text);
        CHECK(integerOfText(text) == 0);
    }
}

TEST_CASE("digits of every script count")
{
    CHECK(integerOfText("٤٢") == 42);
    CHECK(integerOfText("４２") == 42);
    CHECK(integerOfText("-𝟗9") == -99);
}

TEST_CASE("an integer stays in the range of 64 bits")
{
    constexpr auto highest = std::numeric_limits<std::int64_t>::max();
    constexpr auto lowest = std::numeric_limits<std::int64_t>::min();
    CHECK(integerOfText("9223372036854775807") == highest);
    CHECK(integerOfText("9223372036854775808") == highest);
    CHECK(integerOfText("99999999999999999999999999") == highest);
    CHECK(integerOfText("-9223372036854775808") == lowest);
    CHECK(integerOfText("-9223372036854775809") == lowest);
    CHECK(integerOfText("-99999999999999999999999999") == lowest);
}
