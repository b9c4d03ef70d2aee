#include "platform/linux/system/journal/JsonText.h"

#include <doctest/doctest.h>
#include <string>

namespace {

std::string json(std::string_view text)
{
    std::string out;
    platform::appendJsonString(out, text);
    return out;
}

} // namespace

TEST_CASE("a JSON string keeps text of any script and escapes what JSON needs escaped")
{
    CHECK(json("") == "\"\"");
    CHECK(json("Zürich 東京 😀 /") == "\"Zürich 東京 😀 /\"");
    CHECK(json("a \"word\" and a \\") == "\"a \\\"word\\\" and a \\\\\"");
    CHECK(json("\n\r\t\x01\x1f\x7f") == "\"\\n\\r\\t\\u0001\\u001f\x7f\"");
    CHECK(json(std::string_view("a\0b", 3)) == "\"a\\u0000b\"");
}

TEST_CASE("bytes that are not UTF-8 are replaced, the text around them is kept")
{
    const std::string mark = "\uFFFD";
    CHECK(platform::validUTF8("caf\xE9!") == "caf" + mark + "!");
    CHECK(platform::validUTF8("\xC3") == mark);                                  // cut short
    CHECK(platform::validUTF8("\xE6\x9D") == mark + mark);                       // cut short
    CHECK(platform::validUTF8("\xC0\x80") == mark + mark);                       // longer than need be
    CHECK(platform::validUTF8("\xED\xA0\x80") == mark + mark + mark);            // a surrogate
    CHECK(platform::validUTF8("\xF4\x90\x80\x80") == mark + mark + mark + mark); // beyond Unicode
    CHECK(platform::validUTF8("\xFF東\x80") == mark + "東" + mark);
    CHECK(json("\xFF\"") == "\"" + mark + "\\\"\"");
}

TEST_CASE("whatever the bytes, the result is valid UTF-8 without control characters")
{
    std::string bytes;
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            bytes += static_cast<char>(first);
            bytes += static_cast<char>(second);
        }
    }
    const auto text = json(bytes);
    CHECK(platform::validUTF8(text) == text);
    for (char character : text)
        REQUIRE(static_cast<unsigned char>(character) >= 0x20);
}
