#pragma once

#include "platform/linux/ui/textlayout/TextStretch.h"
#include "platform/linux/ui/textlayout/TextTheme.h"
#include "platform/StyledText.h"

#include <cstddef>
#include <QPainter>
#include <QTextLayout>

namespace platform::ui {

// One line of a text, wrapped to a width. Offsets are those of the whole text. Characters that would have what follows
// run in another direction, or as if it were another text, are shown as replacement characters.
class TextLineLayout {
public:
    // The stretch is within a line of the text, or is one with its newline.
    TextLineLayout(const StyledText& text, TextStretch stretch, const TextTheme& theme, double width);

    int rows() const { return _layout.lineCount(); }
    TextStretch stretch() const { return _stretch; }

    void draw(QPainter& painter, QPointF position, TextStretch selection, const QTextCharFormat& selectedFormat,
              double width) const;

    // The gap between characters that is nearest.
    std::size_t offsetAt(int row, double x) const;
    // The character that the point is in; the end where it is in none.
    int rowOf(std::size_t offset) const;
    double xOf(std::size_t offset) const;
    std::size_t rowStart(int row) const;
    std::size_t rowEnd(int row) const; // before the newline

    std::size_t next(std::size_t offset, QTextLayout::CursorMode mode) const;
    std::size_t previous(std::size_t offset, QTextLayout::CursorMode mode) const;
    TextStretch wordAt(std::size_t offset) const;

private:
    int position(std::size_t offset) const; // in UTF-16 units of the line
    std::size_t offset(int position) const;
    void wrap(double width);

    std::string_view _bytes; // without the newline
    TextStretch _stretch;    // with it
    QTextLayout _layout;
    int _rowHeight;
    int _ascent;
};

} // namespace platform::ui
