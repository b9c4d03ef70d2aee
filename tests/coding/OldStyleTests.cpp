#include "tests/coding/Samples.h"

#include <doctest/doctest.h>

using namespace std::string_literals;
using platform::Array;
using platform::Data;
using platform::Dictionary;
using platform::PropertyList;
using platform::propertyListWithOldStyleText;

namespace {

bool isDamagedText(std::string_view text)
{
    const auto value = propertyListWithOldStyleText(text);
    return !value && value.error().domain == platform::CocoaErrorDomain;
}

PropertyList readText(std::string_view text)
{
    auto value = propertyListWithOldStyleText(text);
    REQUIRE(value);
    return *value;
}

} // namespace

TEST_CASE("dictionaries, arrays, strings and data are read from old-style text")
{
    CHECK(readText("{ Mode = Interval; \"Hours of day\" = (1, 2, 3); Empty = {}; None = (); Raw = <0fbd 77>; }")
          == PropertyList(Dictionary{{"Mode", "Interval"},
                                     {"Hours of day", Array{"1", "2", "3"}},
                                     {"Empty", Dictionary()},
                                     {"None", Array()},
                                     {"Raw", Data{0x0F, 0xBD, 0x77}}}));
    CHECK(readText("(a, (b), {c = d;},)") == PropertyList(Array{"a", Array{"b"}, Dictionary{{"c", "d"}}}));
    CHECK(readText("< 0F bd\n77 >") == PropertyList(Data{0x0F, 0xBD, 0x77}));
    CHECK(readText("<>") == PropertyList(Data()));
}

TEST_CASE("a string is plain when it has only letters, digits and a few signs")
{
    CHECK(readText("com.zerkolin/a_b-c:$1") == PropertyList("com.zerkolin/a_b-c:$1"));
    CHECK(readText("\"a b\"") == PropertyList("a b"));
    CHECK(readText("'a \"b\"'") == PropertyList("a \"b\""));
    CHECK(readText("\"\"") == PropertyList(""));
    CHECK(readText("\"é\"") == PropertyList("é"));
    CHECK(isDamagedText("é"));
    CHECK(isDamagedText("a b"));
}

TEST_CASE("escapes are controls, octal numbers and UTF-16 units")
{
    CHECK(readText(R"("\a\b\f\n\r\t\v\"\\\'")") == PropertyList("\a\b\f\n\r\t\v\"\\'"));
    CHECK(readText(R"("\101\60z\U00e9\U20ac\Ud83d\Ude00")") == PropertyList("A0zé€😀"));
    for (const char* text : {R"("\0")", R"("\000")", R"("\U")", R"("\U0000")", R"("\Ud83d")", R"("\Ud83dx")",
                             R"("\Ud83d\U0041")", R"("\Ude00")", R"("\)", R"("\")", "\"\\U12"}) {
        CAPTURE(text);
        CHECK(isDamagedText(text));
    }
}

TEST_CASE("both kinds of comments are skipped")
{
    CHECK(readText("// a { comment\n{ /* = */ a /**/ = // x\n b; }\n/* end */ // end")
          == PropertyList(Dictionary{{"a", "b"}}));
    CHECK(isDamagedText("{ a = b; } /* no end"));
    CHECK(isDamagedText("// nothing else"));
}

TEST_CASE("a table of strings is a dictionary without its braces")
{
    CHECK(readText("/* Unit */\n\"Back up every-hours\" = \"Back up every\";\nplain = 'x';\n\"itself\";\n")
          == PropertyList(Dictionary{{"Back up every-hours", "Back up every"}, {"plain", "x"}, {"itself", "itself"}}));
    CHECK(readText("\xEF\xBB\xBF\"a\" = \"b\";") == PropertyList(Dictionary{{"a", "b"}}));
    CHECK(isDamagedText("\"a\" = \"b\""));
    CHECK(isDamagedText("\"a\" = ;"));
    CHECK(isDamagedText("= b;"));
}

TEST_CASE("old-style text that is damaged is an error")
{
    for (const char* text : {"",        " ",      "(",      ")",          "{",       "}",     "<",
                             ">",       "(a",     "(a b)",  "(a,,b)",     "(,)",     "(a;b)", "{a = b}",
                             "{a = b;", "{a b;}", "{= b;}", "{(a) = b;}", "{a = ;}", "<0>",   "<0g>",
                             "<0f",     "\"a",    "'a",     "a = b; }",   "{} {}",   "() x",  "{a = b;} c = d;",
                             ";",       ",",      "=",      "/",          "/*"}) {
        CAPTURE(text);
        const bool isPlain = std::string_view(text) == "/";
        CHECK(isDamagedText(text) != isPlain);
    }
    CHECK(isDamagedText("\"\xFF\""));
    CHECK(isDamagedText("\"a\0b\""s));
}

TEST_CASE("the format is told by the content")
{
    CHECK(read("{ a = b; }").value() == PropertyList(Dictionary{{"a", "b"}}));
    CHECK(read(" \n<0fbd>").value() == PropertyList(Data{0x0F, 0xBD}));
    CHECK(read(" \n<plist><data>D70=</data></plist>").value() == PropertyList(Data{0x0F, 0xBD}));
    CHECK(isDamaged(""));
    CHECK(isDamaged("bplist00"));
    CHECK(isDamaged("bplist00" + std::string(100, '\0')));
    CHECK(isDamaged("\x7F"
                    "ELF\x02\x01\x01"));
}
