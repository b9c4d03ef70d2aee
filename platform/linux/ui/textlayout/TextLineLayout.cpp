#include "platform/linux/ui/textlayout/TextLineLayout.h"

#include <algorithm>
#include <cmath>
#include <QTextBoundaryFinder>

namespace platform::ui {

namespace {

// Embeddings, overrides and isolates. Each has as many bytes and units as the replacement character.
bool redirects(QChar character)
{
    const auto code = character.unicode();
    return (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
}

QString shownText(std::string_view bytes)
{
    auto text = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
    if (std::ranges::any_of(text.cbegin(), text.cend(), redirects))
        std::replace_if(text.begin(), text.end(), redirects, QChar(QChar::ReplacementCharacter));
    return text;
}

} // namespace

TextLineLayout::TextLineLayout(const StyledText& text, TextStretch stretch, const TextTheme& theme, double width)
    : _bytes(std::string_view(text.string()).substr(stretch.begin, stretch.end - stretch.begin)),
      _stretch(stretch),
      _rowHeight(theme.rowHeight()),
      _ascent(theme.ascent())
{
    if (_bytes.ends_with('\n'))
        _bytes.remove_suffix(1);
    _layout.setText(shownText(_bytes));
    QList<QTextLayout::FormatRange> formats;
    text.visitRuns(_stretch.begin, _stretch.begin + _bytes.size(),
                   [&](std::size_t begin, std::size_t end, const TextAttributes& attributes) {
                       const int start = position(begin);
                       formats.append({start, position(end) - start, theme.format(attributes)});
                   });
    _layout.setFormats(formats);
    if (!formats.isEmpty())
        _layout.setFont(formats.first().format.font());
    wrap(width);
}

void TextLineLayout::wrap(double width)
{
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(Qt::LeftToRight); // whatever a message begins with
    _layout.setTextOption(option);
    _layout.setCacheEnabled(true);
    _layout.beginLayout();
    for (int row = 0;; ++row) {
        auto line = _layout.createLine();
        if (!line.isValid())
            break;
        line.setLineWidth(width);
        // Rows are equally high, whatever fonts stand in for missing characters.
        line.setPosition({0, row * double(_rowHeight) + _ascent - std::ceil(line.ascent())});
    }
    _layout.endLayout();
}

int TextLineLayout::position(std::size_t offset) const
{
    return static_cast<int>(utf16Length(_bytes.substr(0, offset - _stretch.begin)));
}

std::size_t TextLineLayout::offset(int position) const
{
    const auto text = QStringView(_layout.text()).left(position);
    return _stretch.begin + static_cast<std::size_t>(text.toUtf8().size());
}

void TextLineLayout::draw(QPainter& painter, QPointF origin, TextStretch selection,
                          const QTextCharFormat& selectedFormat, double width) const
{
    QList<QTextLayout::FormatRange> selected;
    const auto begin = std::max(selection.begin, _stretch.begin);
    const auto end = std::min(selection.end, _stretch.end);
    if (begin < end) {
        const auto textEnd = _stretch.begin + _bytes.size();
        const int from = position(std::min(begin, textEnd));
        selected.append({from, position(std::min(end, textEnd)) - from, selectedFormat});
        if (end > textEnd) { // the newline, too
            const auto last = _layout.lineAt(rows() - 1);
            const double x = begin > textEnd ? 0 : last.naturalTextWidth();
            painter.fillRect(QRectF(origin.x() + x, origin.y() + (rows() - 1) * _rowHeight, width - x, _rowHeight),
                             selectedFormat.background());
        }
    }
    _layout.draw(&painter, origin, selected);
}

std::size_t TextLineLayout::offsetAt(int row, double x) const
{
    return offset(_layout.lineAt(std::clamp(row, 0, rows() - 1)).xToCursor(x));
}

int TextLineLayout::rowOf(std::size_t offset) const
{
    const auto line = _layout.lineForTextPosition(position(std::min(offset, _stretch.begin + _bytes.size())));
    return line.isValid() ? line.lineNumber() : 0;
}

double TextLineLayout::xOf(std::size_t offset) const
{
    return _layout.lineAt(rowOf(offset)).cursorToX(position(std::min(offset, _stretch.begin + _bytes.size())));
}

std::size_t TextLineLayout::rowStart(int row) const
{
    return offset(_layout.lineAt(row).textStart());
}

std::size_t TextLineLayout::rowEnd(int row) const
{
    const auto line = _layout.lineAt(row);
    const int end = line.textStart() + line.textLength();
    // The gap after the last character of a wrapped row is the one before the first of the next.
    return row + 1 < rows() ? offset(_layout.previousCursorPosition(end)) : offset(end);
}

std::size_t TextLineLayout::next(std::size_t from, QTextLayout::CursorMode mode) const
{
    const auto textEnd = _stretch.begin + _bytes.size();
    return from >= textEnd ? _stretch.end : offset(_layout.nextCursorPosition(position(from), mode));
}

std::size_t TextLineLayout::previous(std::size_t from, QTextLayout::CursorMode mode) const
{
    const auto textEnd = _stretch.begin + _bytes.size();
    return from > textEnd ? textEnd : offset(_layout.previousCursorPosition(position(from), mode));
}

TextStretch TextLineLayout::wordAt(std::size_t from) const
{
    QTextBoundaryFinder words(QTextBoundaryFinder::Word, _layout.text());
    const int place = std::min<int>(position(std::min(from, _stretch.begin + _bytes.size())),
                                    static_cast<int>(_layout.text().size()));
    words.setPosition(place);
    const auto begin = words.isAtBoundary() ? place : words.toPreviousBoundary();
    words.setPosition(place);
    const auto end = words.toNextBoundary();
    return {offset(static_cast<int>(std::max<qsizetype>(begin, 0))),
            offset(static_cast<int>(end < 0 ? _layout.text().size() : end))};
}

} // namespace platform::ui
