#include "platform/Unicode.h"

#include <doctest/doctest.h>
#include <string>

using namespace std::string_view_literals;

TEST_CASE("text is valid UTF-8 when every character has its shortest form")
{
    for (const std::string_view text : {""sv, "plain text of some length"sv, "é"sv, "€"sv, "😀"sv, "\0"sv,
                                        "\xEF\xBF\xBF"sv, "\xF4\x8F\xBF\xBF"sv, "12345678é12345678"sv}) {
        CAPTURE(text);
        CHECK(platform::isValidUTF8(text));
    }
}

TEST_CASE("text with a stray, missing, overlong or impossible sequence is not valid UTF-8")
{
    for (const std::string_view text :
         {"\x80"sv, "\xC3"sv, "\xC3("sv, "\xC0\x80"sv, "\xC1\xBF"sv, "\xE0\x80\x80"sv, "\xE2\x82"sv, "\xED\xA0\x80"sv,
          "\xF0\x80\x80\x80"sv, "\xF4\x90\x80\x80"sv, "\xF5\x80\x80\x80"sv, "\xFF"sv, "12345678\xFF"sv}) {
        CAPTURE(text);
        CHECK_FALSE(platform::isValidUTF8(text));
    }
}

TEST_CASE("every character is taken off as it was appended")
{
    for (char32_t character = 0; character <= 0x110000; ++character) {
        std::string text;
        const bool isCharacter = character <= 0x10FFFF && (character < 0xD800 || character > 0xDFFF);
        if (platform::appendCharacter(text, character) != isCharacter) {
            CAPTURE(static_cast<std::uint32_t>(character));
            FAIL("appended a value that is no character, or refused one");
        }
        std::string_view rest = text;
        if (isCharacter && (platform::takeCharacter(rest) != character || !rest.empty())) {
            CAPTURE(static_cast<std::uint32_t>(character));
            FAIL("took another character off");
        }
    }
}

TEST_CASE("a byte that begins no character is taken off as the replacement character")
{
    std::string_view text = "a\xFF\xE2\x82z";
    std::u32string characters;
    while (!text.empty())
        characters.push_back(platform::takeCharacter(text));
    CHECK(characters == U"a\uFFFD\uFFFD\uFFFDz");
    CHECK(platform::takeCharacter(text) == platform::endOfText);
}
