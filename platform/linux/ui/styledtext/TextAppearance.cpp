#include "platform/ui/TextAppearance.h"

#include <QFontDatabase>
#include <QFontInfo>

namespace platform::ui {

namespace {

struct NamedValues {
    FixedColor light;
    FixedColor dark;
};

NamedValues valuesOf(NamedColor color)
{
    switch (color) {
    case NamedColor::SystemBlue:
        return {{0, 0.34, 0.84}, {0.42, 0.69, 1}};
    case NamedColor::SystemGreen:
        return {{0, 0.48, 0.14}, {0.36, 0.84, 0.47}};
    case NamedColor::SystemOrange:
        return {{0.69, 0.35, 0}, {1, 0.69, 0.33}};
    case NamedColor::SystemRed:
        return {{0.82, 0, 0.08}, {1, 0.5, 0.47}};
    case NamedColor::SelectedTextBackground:
        return {{0.7, 0.84, 1}, {0.25, 0.39, 0.55}};
    case NamedColor::Link:
        return {{0, 0.34, 0.84}, {0.42, 0.69, 1}};
    case NamedColor::PressedLink:
        return {{0, 0.2, 0.5}, {0.7, 0.85, 1}};
    case NamedColor::Text:
    case NamedColor::Label:
        break;
    }
    return {{0, 0, 0}, {1, 1, 1}};
}

} // namespace

FontDescription userFixedPitchFont()
{
    const QFontInfo font(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    return {font.family().toStdString(), font.pointSizeF()};
}

FixedColor resolvedColor(const Color& color, Appearance appearance)
{
    if (const auto* const fixed = std::get_if<FixedColor>(&color))
        return *fixed;
    const auto values = valuesOf(std::get<NamedColor>(color));
    return appearance == Appearance::Dark ? values.dark : values.light;
}

} // namespace platform::ui
