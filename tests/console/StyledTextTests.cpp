#include "platform/StyledText.h"

#include <doctest/doctest.h>
#include <random>

using namespace platform;

namespace {

const TextAttributes fixedPitchFont{.font = TextFont::UserFixedPitch, .foreground = {}};
const TextAttributes redText{.font = {}, .foreground = FixedColor{1, 0, 0}};

std::string runsOf(const StyledText& text, std::size_t begin, std::size_t end)
{
    std::string runs;
    text.visitRuns(begin, end, [&](std::size_t from, std::size_t to, const TextAttributes& attributes) {
        runs += (attributes == redText              ? "r"
                     : attributes == fixedPitchFont ? "f"
                                                    : "-")
            + std::to_string(from) + "-" + std::to_string(to) + " ";
    });
    return runs;
}

} // namespace

TEST_CASE("appended text grows the text with its attributes")
{
    StyledText text;
    text.appendString("ab", redText);
    text.appendString("c", redText);
    text.appendString("", fixedPitchFont);
    CHECK(text.appendAttributes(fixedPitchFont, "%@ %d\n", {"x", 7}));
    text.appendString("tail", {});
    CHECK(text.string() == "abcx 7\ntail");
    CHECK(runsOf(text, 0, text.size()) == "r0-3 f3-7 -7-11 ");
    CHECK(runsOf(text, 2, 8) == "r2-3 f3-7 -7-8 ");
    CHECK(runsOf(text, 5, 5).empty());
}

TEST_CASE("an empty format appends an empty run without failing, and a wrong one appends nothing")
{
    StyledText text;
    CHECK(text.appendAttributes(redText, "", {}));
    CHECK(text.empty());
    CHECK_FALSE(text.appendAttributes(redText, "%d and %@", {1}));
    CHECK(text.empty());
    CHECK(text.lineCount() == 0);
}

TEST_CASE("lines end after newlines, wherever the pieces end, and after so many bytes")
{
    StyledText text;
    for (const char* const piece : {"one", "\ntw", "o\n", "\n", "three"})
        text.appendString(piece, {});
    REQUIRE(text.lineCount() == 4);
    CHECK(text.line(0) == "one\n");
    CHECK(text.line(1) == "two\n");
    CHECK(text.line(2) == "\n");
    CHECK(text.line(3) == "three");
    CHECK(text.lineAt(0) == 0);
    CHECK(text.lineAt(3) == 0);
    CHECK(text.lineAt(4) == 1);
    CHECK(text.lineAt(text.size()) == 3);

    StyledText longText;
    longText.appendString(std::string(StyledText::LongestLine - 1, 'x') + "\u00e9" + "y\nz", {});
    REQUIRE(longText.lineCount() == 3);
    CHECK(longText.line(0) == std::string(StyledText::LongestLine - 1, 'x'));
    CHECK(longText.line(1) == "\u00e9y\n");
    CHECK(longText.line(2) == "z");
}

TEST_CASE("offsets in bytes and in UTF-16 units agree with counting all of the text, in random texts")
{
    std::mt19937 random(7);
    const std::vector<std::string> characters = {"a", "\n", "\u00e9", "\u20ac", "\U0001F600", " "};
    for (int round = 0; round < 50; ++round) {
        StyledText text;
        std::string all;
        for (int piece = 0; piece < 30; ++piece) {
            std::string part;
            for (unsigned count = random() % 9; count > 0; --count)
                part += characters[random() % characters.size()];
            if (random() % 10 == 0)
                part += std::string(random() % 5000, 'l');
            text.appendString(part, random() % 2 ? redText : fixedPitchFont);
            all += part;
        }
        REQUIRE(text.string() == all);
        CHECK(text.length() == utf16Length(all));
        for (std::size_t line = 0; line < text.lineCount(); ++line) {
            const auto bytes = text.line(line);
            CHECK_FALSE(bytes.empty());
            CHECK(bytes.size() <= StyledText::LongestLine);
            CHECK(bytes.substr(0, bytes.size() - 1).find('\n') == std::string_view::npos);
        }
        for (std::size_t offset = 0; offset <= all.size(); offset += 1 + offset / 50) {
            if (offset < all.size() && (static_cast<unsigned char>(all[offset]) & 0xC0U) == 0x80)
                continue;
            const auto units = utf16Length(std::string_view(all).substr(0, offset));
            CHECK(text.lengthBefore(offset) == units);
            CHECK(text.offsetOfLength(units) == offset);
        }
    }
}
