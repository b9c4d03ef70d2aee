#pragma once

#include "platform/StyledText.h"
#include "platform/ui/TextView.h"

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QTextCharFormat>

namespace platform::ui {

// How styled text is drawn with a palette: a named colour so that it can be read on the palette's background, a
// fixed one as it is.
class TextTheme {
public:
    TextTheme() = default;
    TextTheme(const QPalette& palette, const QFont& ownFont, const SelectedTextAttributes& selected);

    QTextCharFormat format(const TextAttributes& attributes) const;
    const QTextCharFormat& selectedFormat() const { return _selectedFormat; }
    // Of what was looked for and found: seen at once, on any background.
    const QTextCharFormat& matchFormat() const { return _matchFormat; }

    int rowHeight() const { return _rowHeight; }
    int ascent() const { return _ascent; }
    double characterWidth() const { return _characterWidth; } // of the fixed-pitch font

private:
    QColor color(const Color& color) const;

    QFont _ownFont;
    QFont _fixedPitchFont;
    QColor _text;
    QColor _base;
    QColor _link;
    QColor _selectedBackground;
    QTextCharFormat _selectedFormat;
    QTextCharFormat _matchFormat;
    int _rowHeight = 1;
    int _ascent = 0;
    double _characterWidth = 1;
};

// As WCAG measures it: from 1 (the same) to 21.
double contrast(const QColor& one, const QColor& other);

constexpr double TextContrast = 4.5;   // to read a text
constexpr double ObjectContrast = 3.0; // to see that something is there

// The colour, or as much lighter or darker a one as it takes to see it on the background.
QColor legibleOn(const QColor& background, QColor color, double leastContrast = TextContrast);

} // namespace platform::ui
