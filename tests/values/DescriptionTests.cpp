#include "platform/Format.h"

#include <cmath>
#include <doctest/doctest.h>
#include <limits>

using platform::Array;
using platform::Data;
using platform::Date;
using platform::description;
using platform::Dictionary;
using platform::PropertyList;

TEST_CASE("a string or a number by itself is printed bare")
{
    CHECK(description("com.zerkolin \"x\"") == "com.zerkolin \"x\"");
    CHECK(description("") == "");
    CHECK(description(true) == "1");
    CHECK(description(false) == "0");
    CHECK(description(-60005) == "-60005");
    CHECK(description(std::numeric_limits<std::int64_t>::min()) == "-9223372036854775808");
}

TEST_CASE("a real is printed with as many digits as it needs")
{
    CHECK(description(1.5) == "1.5");
    CHECK(description(0.1) == "0.1");
    CHECK(description(2.0) == "2");
    CHECK(description(-1e100) == "-1e+100");
    CHECK(description(0.1 + 0.2) == "0.30000000000000004");
    CHECK(description(std::numeric_limits<double>::infinity()) == "inf");
    CHECK(description(std::nan("")) == "nan");
}

TEST_CASE("an integer from 2^63 on and a UID are printed as they are")
{
    CHECK(description(UINT64_MAX) == "18446744073709551615");
    CHECK(description(platform::UID{7}) == "<CFKeyedArchiverUID>{value = 7}");
    CHECK(description(platform::Array{UINT64_MAX, platform::UID{7}})
          == "(\n    18446744073709551615,\n    \"<CFKeyedArchiverUID>{value = 7}\"\n)");
}

TEST_CASE("an array lists its elements one a line, quoted unless they are letters and digits alone")
{
    CHECK(description(Array{"com.zerkolin.brevane.uninstall", "b2", "", "c d"})
          == "(\n    \"com.zerkolin.brevane.uninstall\",\n    b2,\n    \"\",\n    \"c d\"\n)");
    CHECK(description(Array()) == "(\n)");
}

TEST_CASE("numbers in a listing are quoted when they have more than digits")
{
    CHECK(description(Array{1, -1, 1.5, 2.0, true}) == "(\n    1,\n    \"-1\",\n    \"1.5\",\n    2,\n    1\n)");
}

TEST_CASE("special characters in a listing are escaped, others by their UTF-16 units")
{
    CHECK(description(Array{"a\"b\\c\nd\te"}) == "(\n    \"a\\\"b\\\\c\\nd\\te\"\n)");
    CHECK(description(Array{"é€😀"}) == "(\n    \"\\U00e9\\U20ac\\Ud83d\\Ude00\"\n)");
    CHECK(description(Array{"\x01\x1F\x7F"}) == "(\n    \"\\001\\037\\U007f\"\n)");
    CHECK(description(Array{"\xFF"}) == "(\n    \"\\Ufffd\"\n)");
}

TEST_CASE("a dictionary lists its keys in order")
{
    CHECK(description(Dictionary{{"b", 2}, {"a.b", "x"}, {"a", true}})
          == "{\n    a = 1;\n    \"a.b\" = x;\n    b = 2;\n}");
    CHECK(description(Dictionary()) == "{\n}");
}

TEST_CASE("a collection inside another brings its own indentation")
{
    CHECK(description(Array{Array{1, 2}, "a"}) == "(\n        (\n        1,\n        2\n    ),\n    a\n)");
    CHECK(description(Dictionary{{"a", Dictionary{{"b", Array()}}}})
          == "{\n    a =     {\n        b =         (\n        );\n    };\n}");
}

TEST_CASE("data is printed in hexadecimal, four bytes at a time")
{
    CHECK(description(Data{0x01, 0xAB}) == "<01ab>");
    CHECK(description(Data{1, 2, 3, 4, 5}) == "<01020304 05>");
    CHECK(description(Data()) == "<>");
    CHECK(description(Array{Data{1, 2}}) == "(\n    <0102>\n)");
}

TEST_CASE("a date is printed in Coordinated Universal Time")
{
    CHECK(description(Date{0}) == "2001-01-01 00:00:00 +0000");
    CHECK(description(Date{-0.5}) == "2000-12-31 23:59:59 +0000");
    CHECK(description(Date{63113904000}) == "4001-01-01 00:00:00 +0000");
    CHECK(description(Array{Date{0}}) == "(\n    \"2001-01-01 00:00:00 +0000\"\n)");
}

TEST_CASE("a date beyond all calendars is still printed")
{
    for (const double seconds : {1e300, -1e300, std::nan(""), std::numeric_limits<double>::infinity()}) {
        CAPTURE(seconds);
        CHECK(description(Date{seconds}).ends_with(" +0000"));
    }
}
