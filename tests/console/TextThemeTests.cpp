#include "diagnostics/console/RichText.h"
#include "platform/linux/ui/textlayout/TextTheme.h"
#include "platform/ui/TextAppearance.h"

#include <doctest/doctest.h>
#include <QApplication>

using namespace platform;
using namespace platform::ui;

namespace {

QPalette paletteOn(const QColor& base)
{
    QPalette palette(base);
    palette.setColor(QPalette::Base, base);
    palette.setColor(QPalette::Text, contrast(base, Qt::white) > contrast(base, Qt::black) ? Qt::white : Qt::black);
    palette.setColor(QPalette::Highlight, QColor(61, 126, 217));
    return palette;
}

// Of an exported document's colours.
std::string tableEntry(const QColor& color)
{
    return "\\red" + std::to_string(color.red()) + "\\green" + std::to_string(color.green()) + "\\blue"
        + std::to_string(color.blue()) + ";";
}

} // namespace

TEST_CASE("contrast is measured from the same colour to black on white")
{
    CHECK(contrast(Qt::white, Qt::white) == doctest::Approx(1));
    CHECK(contrast(Qt::black, Qt::white) == doctest::Approx(21));
}

TEST_CASE("every named colour of the console can be read on light and dark")
{
    for (const auto& base : {QColor(Qt::white), QColor(25, 25, 25), QColor(53, 53, 53), QColor(239, 240, 241)}) {
        const TextTheme theme(paletteOn(base), QApplication::font(), {});
        for (const Color& color :
             {Color(NamedColor::Text), Color(NamedColor::SystemBlue), Color(NamedColor::SystemGreen),
              Color(NamedColor::SystemOrange), Color(NamedColor::SystemRed)}) {
            const auto drawn =
                theme.format({.font = TextFont::UserFixedPitch, .foreground = color}).foreground().color();
            CAPTURE(base.name().toStdString());
            CAPTURE(drawn.name().toStdString());
            CHECK(contrast(base, drawn) >= 4.5);
        }
    }
}

TEST_CASE("the fixed colours of old systems are painted as they are, on any background, and exported so too")
{
    for (const auto& base : {QColor(Qt::white), QColor(25, 25, 25)}) {
        const TextTheme theme(paletteOn(base), QApplication::font(), {});
        for (const FixedColor& fixed : {FixedColor{0, 0, 1, 1}, FixedColor{0, 0.58, 0, 1}, FixedColor{0.81, 0.41, 0, 1},
                                        FixedColor{0.96, 0, 0, 1}}) {
            const TextAttributes attributes{.font = TextFont::UserFixedPitch, .foreground = fixed};
            const auto drawn = theme.format(attributes).foreground().color();
            CHECK(drawn.rgb() == QColor::fromRgbF(float(fixed.red), float(fixed.green), float(fixed.blue)).rgb());
            StyledText text;
            text.appendString("x", attributes);
            CHECK(richText(text, userFixedPitchFont()).find(tableEntry(drawn)) != std::string::npos);
        }
    }
}

TEST_CASE("a match stands out from every ground, and its text from it, whatever colour the desktop selects with")
{
    for (const auto& base : {QColor(Qt::white), QColor(Qt::black), QColor(25, 25, 25), QColor(119, 119, 119)}) {
        for (const auto& highlight : {QColor(61, 126, 217), QColor(Qt::white), QColor(Qt::black), QColor(255, 230, 0),
                                      QColor(128, 128, 128), base}) {
            auto palette = paletteOn(base);
            palette.setColor(QPalette::Highlight, highlight);
            const TextTheme theme(palette, QApplication::font(), {});
            const auto& format = theme.matchFormat();
            CAPTURE(base.name().toStdString());
            CAPTURE(highlight.name().toStdString());
            CHECK(contrast(base, format.background().color()) >= 3);
            CHECK(contrast(format.background().color(), format.foreground().color()) >= 4.5);
        }
    }
}

TEST_CASE("what is on a white ground on screen is exported in the same colours")
{
    const TextTheme theme(paletteOn(Qt::white), QApplication::font(), {});
    for (const NamedColor name :
         {NamedColor::SystemBlue, NamedColor::SystemGreen, NamedColor::SystemOrange, NamedColor::SystemRed}) {
        const auto drawn = theme.format({.font = {}, .foreground = name}).foreground().color();
        StyledText text;
        text.appendString("x", {.font = {}, .foreground = name});
        CHECK(richText(text, userFixedPitchFont()).find(tableEntry(drawn)) != std::string::npos);
    }
}

TEST_CASE("a colour that can be read stays as it is")
{
    CHECK(legibleOn(Qt::white, QColor(0, 0, 139)) == QColor(0, 0, 139));
}

TEST_CASE("a fixed colour is the same in every appearance, a system colour is not")
{
    const FixedColor fixed{0.1, 0.2, 0.3, 1};
    CHECK(resolvedColor(fixed, Appearance::Light) == fixed);
    CHECK(resolvedColor(fixed, Appearance::Dark) == fixed);
    CHECK(resolvedColor(NamedColor::SystemBlue, Appearance::Light)
          != resolvedColor(NamedColor::SystemBlue, Appearance::Dark));
}

TEST_CASE("the user's fixed-pitch font has a name and a size")
{
    CHECK_FALSE(userFixedPitchFont().family.empty());
    CHECK(userFixedPitchFont().pointSize > 4);
}
