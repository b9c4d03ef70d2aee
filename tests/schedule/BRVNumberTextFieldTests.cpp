#include "schedule/BRVNumberTextField.h"

#include <doctest/doctest.h>
#include <string>

namespace {

bool allows(std::size_t length, std::size_t location, std::size_t selected, std::string_view replacement)
{
    return BRVNumberTextField::shouldChangeText(length, {location, selected}, replacement);
}

} // namespace

TEST_CASE("digits are taken as long as three result, and a fourth is refused")
{
    CHECK(allows(0, 0, 0, "1"));
    CHECK(allows(1, 1, 0, "2"));
    CHECK(allows(2, 2, 0, "3"));
    CHECK_FALSE(allows(3, 3, 0, "4"));
    CHECK(allows(0, 0, 0, "999"));
    CHECK_FALSE(allows(0, 0, 0, "1000"));
    CHECK_FALSE(allows(2, 1, 0, "34"));
}

TEST_CASE("a selection makes room for what replaces it")
{
    CHECK(allows(3, 0, 3, "123"));
    CHECK(allows(3, 1, 1, "0"));
    CHECK_FALSE(allows(3, 1, 1, "00"));
    CHECK(allows(3, 0, 2, "12"));
}

TEST_CASE("deleting is allowed down to the last digit, which stays")
{
    CHECK(allows(3, 2, 1, ""));
    CHECK(allows(3, 1, 2, ""));
    CHECK(allows(2, 0, 1, ""));
    CHECK_FALSE(allows(1, 0, 1, ""));
    CHECK_FALSE(allows(3, 0, 3, ""));
    CHECK_FALSE(allows(0, 0, 0, ""));
}

TEST_CASE("an overlong field can be shortened only to three digits or fewer")
{
    CHECK_FALSE(allows(5, 4, 1, ""));
    CHECK(allows(5, 2, 3, ""));
}

TEST_CASE("only decimal digits are taken")
{
    for (const char* text : {"a", "-", "+", " ", ".", "1 ", "1a2", "\n", "²", "½", "Ⅷ", "一", "\xF0\x9F\x98\x80"})
        CHECK_FALSE(allows(1, 1, 0, text));
}

TEST_CASE("decimal digits of every script are taken and count as the text field counts")
{
    CHECK(allows(0, 0, 0, "٣"));
    CHECK(allows(0, 0, 0, "१२३"));
    CHECK(allows(0, 0, 0, "４2"));
    // A mathematical digit is two UTF-16 code units.
    CHECK(allows(0, 0, 0, "\xF0\x9D\x9F\x97"));
    CHECK(allows(1, 1, 0, "\xF0\x9D\x9F\x97"));
    CHECK_FALSE(allows(2, 2, 0, "\xF0\x9D\x9F\x97"));
    CHECK_FALSE(allows(0, 0, 0, "\xF0\x9D\x9F\x97\xF0\x9D\x9F\x97"));
}

TEST_CASE("damaged text is refused")
{
    for (const char* text : {"\xC3", "\xFF", "1\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80"})
        CHECK_FALSE(allows(1, 1, 0, text));
}
