#include "platform/linux/ui/textlayout/TextTheme.h"

#include "platform/ui/TextAppearance.h"

#include <algorithm>
#include <cmath>
#include <QFontDatabase>
#include <QFontMetricsF>
#include <variant>

namespace platform::ui {

namespace {

double linearComponent(double value)
{
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color)
{
    return 0.2126 * linearComponent(color.redF()) + 0.7152 * linearComponent(color.greenF())
        + 0.0722 * linearComponent(color.blueF());
}

QColor mixture(const QColor& one, const QColor& other, double part)
{
    const auto mix = [part](double a, double b) { return static_cast<float>(a + (b - a) * part); };
    return QColor::fromRgbF(mix(one.redF(), other.redF()), mix(one.greenF(), other.greenF()),
                            mix(one.blueF(), other.blueF()));
}

bool isDark(const QColor& background)
{
    return contrast(background, Qt::white) > contrast(background, Qt::black);
}

} // namespace

double contrast(const QColor& one, const QColor& other)
{
    const double first = luminance(one);
    const double second = luminance(other);
    return (std::max(first, second) + 0.05) / (std::min(first, second) + 0.05);
}

QColor legibleOn(const QColor& background, QColor color, double leastContrast)
{
    const QColor away = isDark(background) ? Qt::white : Qt::black;
    for (int step = 0; step < 20 && contrast(background, color) < leastContrast; ++step)
        color = mixture(color, away, 0.1);
    return color;
}

TextTheme::TextTheme(const QPalette& palette, const QFont& ownFont, const SelectedTextAttributes& selected)
    : _ownFont(ownFont),
      _fixedPitchFont(QFontDatabase::systemFont(QFontDatabase::FixedFont)),
      _text(palette.color(QPalette::Text)),
      _base(palette.color(QPalette::Base)),
      _link(legibleOn(_base, palette.color(QPalette::Link))),
      _selectedBackground(mixture(_base, palette.color(QPalette::Highlight), isDark(_base) ? 0.4 : 0.2))
{
    const QFontMetricsF own(_ownFont);
    const QFontMetricsF fixed(_fixedPitchFont);
    _rowHeight = std::max(1, static_cast<int>(std::ceil(std::max(own.height(), fixed.height()))));
    _ascent = static_cast<int>(std::ceil(std::max(own.ascent(), fixed.ascent())));
    _characterWidth = std::max(1.0, fixed.horizontalAdvance(QLatin1Char('0')));
    if (selected.background)
        _selectedFormat.setBackground(color(*selected.background));
    if (selected.foreground)
        _selectedFormat.setForeground(color(*selected.foreground));
    const auto match = legibleOn(_base, palette.color(QPalette::Highlight), ObjectContrast);
    _matchFormat.setBackground(match);
    _matchFormat.setForeground(isDark(match) ? QColor(Qt::white) : QColor(Qt::black));
}

QColor TextTheme::color(const Color& color) const
{
    if (color == Color(NamedColor::Text) || color == Color(NamedColor::Label))
        return _text;
    if (color == Color(NamedColor::Link))
        return _link;
    if (color == Color(NamedColor::PressedLink))
        return mixture(_link, _text, 0.5);
    if (color == Color(NamedColor::SelectedTextBackground))
        return _selectedBackground;
    const auto fixed = resolvedColor(color, isDark(_base) ? Appearance::Dark : Appearance::Light);
    const auto part = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(part(fixed.red), part(fixed.green), part(fixed.blue), part(fixed.alpha));
}

QTextCharFormat TextTheme::format(const TextAttributes& attributes) const
{
    QTextCharFormat format;
    format.setFont(attributes.font ? _fixedPitchFont : _ownFont);
    const Color foreground = attributes.foreground.value_or(NamedColor::Text);
    const bool isFixed = std::holds_alternative<FixedColor>(foreground);
    format.setForeground(isFixed ? color(foreground) : legibleOn(_base, color(foreground)));
    return format;
}

} // namespace platform::ui
