#include "platform/Format.h"

#include <doctest/doctest.h>
#include <limits>
#include <string>

using platform::Dictionary;
using platform::formatString;
using platform::PropertyList;

TEST_CASE("plain text and percent signs are copied")
{
    CHECK(formatString("", {}) == "");
    CHECK(formatString("100%% sure", {}) == "100% sure");
}

TEST_CASE("objects print their descriptions and an absent one prints (null)")
{
    const Dictionary userInfo{{"path", "/a b"}, {"status", -60005}};
    CHECK(formatString("%@ %@ %@", {userInfo.find("path"), userInfo.find("status"), userInfo.find("missing")})
          == "/a b -60005 (null)");
    CHECK(formatString("%@", {std::string("text")}) == "text");
    CHECK(formatString("%@", {7}) == "7");
    CHECK(formatString("%s", {static_cast<const char*>(nullptr)}) == "(null)");
}

TEST_CASE("a number conversion takes a number object by value and an absent one as zero")
{
    const Dictionary userInfo{{"message", 26}, {"errno", true}, {"wrong", "12"}};
    CHECK(formatString("(%lu)", {userInfo.find("message")}) == "(26)");
    CHECK(formatString("%d", {userInfo.find("errno")}) == "1");
    CHECK(formatString("%d %lu", {userInfo.find("missing"), userInfo.find("wrong")}) == "0 0");
    const PropertyList large(UINT64_MAX);
    CHECK(formatString("%lu", {&large}) == "18446744073709551615");
}

TEST_CASE("numbers have the width of their conversion, as in C")
{
    constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
    CHECK(formatString("%ld %lld %qd %zd", {smallest, smallest, smallest, smallest})
          == "-9223372036854775808 -9223372036854775808 -9223372036854775808 -9223372036854775808");
    CHECK(formatString("%lu", {-1}) == "18446744073709551615");
    CHECK(formatString("%u", {-1}) == "4294967295");
    CHECK(formatString("%d", {std::int64_t{1} << 32}) == "0");
    CHECK(formatString("%d %i", {std::uint32_t{0xFFFFFFFF}, 5}) == "-1 5");
    CHECK(formatString("%hd %hu %hhd %hhu", {0x18000, 0x18000, 0x1FF, 0x1FF}) == "-32768 32768 -1 255");
    CHECK(formatString("%x %lx %hhx", {255, -1, -1}) == "ff ffffffffffffffff ff");
}

TEST_CASE("a character conversion prints the character of its number")
{
    CHECK(formatString("%c%c", {'A', 0xE9}) == "Aé");
    CHECK_FALSE(formatString("%c", {0xD800}));
    CHECK_FALSE(formatString("%c", {-1}));
}

TEST_CASE("positions choose arguments and leave the order of the others alone")
{
    CHECK(formatString("%2$@ before %1$@", {"one", "two"}) == "two before one");
    CHECK(formatString("%2$@ %@ %@", {"one", "two"}) == "two one two");
    CHECK(formatString("%1$d%1$@", {3}) == "33");
}

TEST_CASE("the log's privacy marks change nothing")
{
    CHECK(formatString("'%{public}s' '%{public}@' (%{private}d)", {"a", "b", 3}) == "'a' 'b' (3)");
}

TEST_CASE("surplus arguments are ignored")
{
    CHECK(formatString("%@", {"one", "two"}) == "one");
}

TEST_CASE("a format with an unknown or broken conversion or too few arguments gives nothing")
{
    for (const char* format : {"%", "%y", "%l", "%ll", "%{public", "%{public}", "%0$@", "%3$@", "%1$", "%1", "%@ %@ %@",
                               "%99999999999999999999$@", "%1@", "%-d"}) {
        CAPTURE(format);
        CHECK_FALSE(formatString(format, {1, 2}));
    }
    CHECK_FALSE(formatString("%d", {"text"}));
    CHECK_FALSE(formatString("%s", {1}));
}

TEST_CASE("appending keeps what was there, and leaves it alone when the format is wrong")
{
    std::string text = "before ";
    CHECK(platform::appendFormat(text, "%@", {"after"}));
    CHECK(text == "before after");
    CHECK_FALSE(platform::appendFormat(text, "lost %@ %y", {"lost"}));
    CHECK(text == "before after");
}
