#include "diagnostics/console/RichText.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <doctest/doctest.h>
#include <unistd.h>

using namespace platform;

namespace {

constexpr TextAttributes fixedIn(const Color& color)
{
    return {.font = TextFont::UserFixedPitch, .foreground = color};
}

StyledText sampleText()
{
    StyledText text;
    text.appendString("11/20/26 ", fixedIn(NamedColor::Text));
    text.appendString("Brevane\u00A0Scheduler", fixedIn(FixedColor{0, 0, 1}));
    text.appendString(" caf\u00e9 \U0001F600 {a\\b}\tend\n", fixedIn(FixedColor{0.96, 0, 0}));
    text.appendString("plain\n", {});
    return text;
}

} // namespace

TEST_CASE("rich text names the font, its size and the colours, and escapes what it must")
{
    CHECK(richText(sampleText(), {"DejaVu Sans Mono", 10.5})
          == "{\\rtf1\\ansi\\ansicpg1252\\deff0\n"
             "{\\fonttbl{\\f0\\fswiss\\fcharset0 Helvetica;}{\\f1\\fmodern\\fcharset0 DejaVu Sans Mono;}}\n"
             "{\\colortbl;\\red0\\green0\\blue255;\\red245\\green0\\blue0;}\n"
             "\\pard\\uc1\\fs21\n"
             "\\f1\\cf0 11/20/26 \\f1\\cf1 Brevane\\~Scheduler\\f1\\cf2  caf\\u233\\'3f \\u-10179\\'3f\\u-8704\\'3f "
             "\\{a\\\\b\\}\\tab "
             "end\\par\n\\f0\\cf0 plain\\par\n}\n");
}

TEST_CASE("an empty text is a document without text")
{
    CHECK(richText({}, {"Mono", 12}).ends_with("\\pard\\uc1\\fs24\n}\n"));
}

TEST_CASE("a font's name cannot break out of the document")
{
    CHECK(richText({}, {"A;}{\\b B", 12}).find("fcharset0 Ab B;}}") != std::string::npos);
}

TEST_CASE("another program reads the rich text with its words, colours and font")
{
    if (::access("/usr/bin/unrtf", X_OK) != 0) {
        MESSAGE("SKIPPED: unrtf is not installed");
        return;
    }
    const TemporaryDirectory folder;
    const auto path = folder.write("log.rtf", richText(sampleText(), {"DejaVu Sans Mono", 10.5}));
    ChildProcess unrtf({"unrtf", "--html", "--quiet", path});
    const auto html = unrtf.readAll();
    CHECK(unrtf.wait() == 0);
    CAPTURE(html);
    CHECK(html.find("#0000ff") != std::string::npos);
    CHECK(html.find("#f50000") != std::string::npos);
    CHECK(html.find("DejaVu Sans Mono") != std::string::npos);
    CHECK(html.find("11/20/26") != std::string::npos);
    CHECK(html.find("Brevane&nbsp;Scheduler") != std::string::npos);
    CHECK(html.find("caf&eacute;") != std::string::npos);
    CHECK(html.find("{a\\b}") != std::string::npos);
    CHECK(html.find("plain") != std::string::npos);
    CHECK(html.find('?') == std::string::npos);
}

TEST_CASE("another program that knows no Unicode loses no letter behind a character")
{
    if (::access("/usr/bin/unrtf", X_OK) != 0) {
        MESSAGE("SKIPPED: unrtf is not installed");
        return;
    }
    const TemporaryDirectory folder;
    StyledText text;
    text.appendString("\u00e9tude d\u2019\u00e9t\u00e9 \u65e5\u672cx \U0001F600y\n", {});
    const auto path = folder.write("log.rtf", richText(text, {"Mono", 10}));
    ChildProcess unrtf({"unrtf", "--text", "--quiet", path});
    const auto plain = unrtf.readAll();
    CHECK(unrtf.wait() == 0);
    CAPTURE(plain);
    for (const char* const part : {"tude d", "x ", "y"})
        CHECK(plain.find(part) != std::string::npos);
}
