#pragma once

#include "platform/linux/ui/textlayout/TextTheme.h"
#include "platform/StyledText.h"

#include <cstddef>
#include <QPainter>
#include <QTextLayout>

namespace platform::ui {

// A stretch of a text, in bytes.
struct TextStretch {
    std::size_t begin = 0;
    std::size_t end = 0;
    bool isEmpty() const { return begin == end; }
};

// One line of a text, wrapped to a width. Offsets are those of the whole text.
class TextLineLayout {
public:
    TextLineLayout(const StyledText& text, std::size_t line, const TextTheme& theme, double width);

    int rows() const { return _layout.lineCount(); }
    TextStretch stretch() const { return _stretch; }

    void draw(QPainter& painter, QPointF position, TextStretch selection, double width) const;

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
    QTextCharFormat _selectedFormat;
    int _rowHeight;
    int _ascent;
};

} // namespace platform::ui
