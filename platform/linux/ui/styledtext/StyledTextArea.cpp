#include "platform/linux/ui/styledtext/StyledTextArea.h"

#include <algorithm>
#include <QPainter>
#include <QPaintEvent>
#include <QScrollBar>
#include <QSignalBlocker>
#include <utility>

namespace platform::ui {

namespace {

constexpr int textMargin = 4;

} // namespace

StyledTextArea::StyledTextArea(QWidget* parent)
    : QAbstractScrollArea(parent),
      _text(std::make_shared<const StyledText>()),
      _lines(_text)
{
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn); // or the text would wrap anew when it comes
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setCursor(Qt::IBeamCursor);
    viewport()->setBackgroundRole(QPalette::Base);
    verticalScrollBar()->setSingleStep(1);
    rebuild();
}

std::shared_ptr<const StyledText> StyledTextArea::setText(std::shared_ptr<const StyledText> text)
{
    _layouts.clear();
    _top = {};
    _anchor = _head = 0;
    _showsMatch = false;
    auto earlier = std::exchange(_text, std::move(text));
    rebuild();
    Q_EMIT textReplaced();
    Q_EMIT selectionChanged();
    return earlier;
}

void StyledTextArea::setSelectedTextAttributes(const SelectedTextAttributes& attributes)
{
    _selectedAttributes = attributes;
    rebuild();
}

void StyledTextArea::setPlaceholder(const QString& placeholder)
{
    _placeholder = placeholder;
    viewport()->update();
}

void StyledTextArea::rebuild()
{
    const auto topLine = _top.line;
    _theme = TextTheme(palette(), font(), _selectedAttributes);
    _layouts.clear();
    _lines = TextLines(_text);
    const auto columns = std::max(1.0, textWidth() / _theme.characterWidth());
    const auto perRow = static_cast<std::size_t>(columns);
    _rows.build(_text->lineCount(), [this, perRow](std::size_t line) {
        const auto bytes = _text->lineStart(line + 1) - _text->lineStart(line);
        return static_cast<std::int64_t>(bytes > 1 ? (bytes - 2) / perRow + 1 : 1);
    });
    _top = {topLine, 0};
    _arranged = false;
    arrange();
    viewport()->update();
}

double StyledTextArea::textWidth() const
{
    return std::max(_theme.characterWidth(), double(viewport()->width() - 2 * textMargin));
}

std::int64_t StyledTextArea::rowsInSight() const
{
    return std::max(1, (viewport()->height() - 2 * textMargin) / _theme.rowHeight());
}

TextLineLayout& StyledTextArea::layoutOf(std::size_t line)
{
    const auto found = _layouts.find(line);
    if (found != _layouts.end())
        return found->second;
    settle(line);
    auto& layout = _layouts.try_emplace(line, *_text, _lines.stretch(line), _theme, textWidth()).first->second;
    if (layout.rows() != _rows.rows(line))
        _rows.setRows(line, layout.rows());
    return layout;
}

void StyledTextArea::settle(std::size_t line)
{
    _lines.settle(line, [this](TextStretch stretch) {
        const TextLineLayout layout(*_text, stretch, _theme, textWidth());
        return layout.rowStart(layout.rows() - 1);
    });
}

std::size_t StyledTextArea::lineAt(std::size_t offset)
{
    settle(_lines.at(offset));
    return _lines.at(offset);
}

void StyledTextArea::arrange()
{
    if (_arranged)
        return;
    _arranged = true;
    if (_rows.lineCount() > 0) {
        // Every correction lays more lines out, of which there are only so many on a page.
        constexpr int mostTurns = 16;
        for (int turn = 0; turn < mostTurns && arrangeOnce(); ++turn) { }
        forgetDistantLayouts();
    }
    updateScrollBar();
}

bool StyledTextArea::arrangeOnce()
{
    const auto before = _rows.total();
    const auto top = _top;
    _top.line = std::min(_top.line, _rows.lineCount() - 1);
    // A page above, so that scrolling up by rows meets no guesses.
    auto above = rowsInSight();
    for (auto line = _top.line; line > 0 && above > 0; --line)
        above -= layoutOf(line - 1).rows();
    auto below = rowsInSight() + 1;
    _top.row = std::clamp<std::int64_t>(_top.row, 0, layoutOf(_top.line).rows() - 1);
    below += _top.row;
    for (auto line = _top.line; line < _rows.lineCount() && below > 0; ++line)
        below -= layoutOf(line).rows();
    // No empty space below the end.
    const auto last = std::max<std::int64_t>(0, _rows.total() - rowsInSight());
    if (_rows.rowsBefore(_top.line) + _top.row > last)
        _top = _rows.place(last);
    return _rows.total() != before || _top != top;
}

void StyledTextArea::forgetDistantLayouts()
{
    const auto page = static_cast<std::size_t>(rowsInSight()) + 1;
    const auto first = _top.line > page ? _top.line - page : 0;
    std::erase_if(_layouts, [&](const auto& each) { return each.first < first || each.first > _top.line + page; });
}

void StyledTextArea::updateScrollBar()
{
    auto& bar = *verticalScrollBar();
    const QSignalBlocker blocker(bar);
    const auto page = rowsInSight();
    bar.setRange(0, static_cast<int>(std::max<std::int64_t>(0, _rows.total() - page)));
    bar.setPageStep(static_cast<int>(page));
    bar.setValue(static_cast<int>(_rows.rowsBefore(_top.line) + _top.row));
    bar.update();
}

void StyledTextArea::scrollContentsBy(int, int)
{
    if (_rows.lineCount() == 0)
        return;
    const auto& bar = *verticalScrollBar();
    if (bar.value() == bar.maximum())
        scrollToEnd();
    else
        scrollToPlace(_rows.place(bar.value()));
}

void StyledTextArea::scrollToPlace(Place place)
{
    _top = place;
    _arranged = false;
    arrange();
    viewport()->update();
}

void StyledTextArea::scrollToEnd()
{
    if (_rows.lineCount() > 0)
        scrollToPlace({_rows.lineCount() - 1, _rows.rows(_rows.lineCount() - 1) - 1});
}

StyledTextArea::Place StyledTextArea::placeOf(std::size_t offset)
{
    const auto line = lineAt(offset);
    return {line, layoutOf(line).rowOf(offset)};
}

void StyledTextArea::scrollTo(std::size_t offset)
{
    if (_rows.lineCount() == 0)
        return;
    arrange();
    const auto place = placeOf(offset);
    const auto row = _rows.rowsBefore(place.line) + place.row;
    const auto top = _rows.rowsBefore(_top.line) + _top.row;
    if (row >= top && row < top + rowsInSight())
        return;
    // One row away, as when a selection grows, moves by one; what is farther comes to the middle.
    const auto space = row == top - 1 ? 0 : row == top + rowsInSight() ? rowsInSight() - 1 : rowsInSight() / 2;
    scrollToPlace(_rows.place(row - space));
}

int StyledTextArea::topOf(std::size_t line) const
{
    const auto rows = _rows.rowsBefore(line) - _rows.rowsBefore(_top.line) - _top.row;
    return textMargin + static_cast<int>(rows) * _theme.rowHeight();
}

void StyledTextArea::paintEvent(QPaintEvent* event)
{
    arrange();
    QPainter painter(viewport());
    if (_text->empty()) {
        const auto room = viewport()->rect().marginsRemoved(QMargins(textMargin, textMargin, textMargin, textMargin));
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(room, Qt::AlignCenter | Qt::TextWordWrap, _placeholder);
    }
    const auto& selectedFormat = _showsMatch ? _theme.matchFormat() : _theme.selectedFormat();
    const auto chosen = selection();
    for (auto line = _top.line; line < _rows.lineCount(); ++line) {
        const int y = topOf(line);
        if (y > event->rect().bottom())
            break;
        layoutOf(line).draw(painter, QPointF(textMargin, y), chosen, selectedFormat, textWidth());
    }
}

bool StyledTextArea::viewportEvent(QEvent* event)
{
    if (event->type() == QEvent::LayoutDirectionChange)
        rebuild();
    return QAbstractScrollArea::viewportEvent(event);
}

void StyledTextArea::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    const auto& bar = *verticalScrollBar();
    const bool atEnd = bar.maximum() > 0 && bar.value() == bar.maximum();
    if (event->size().width() != event->oldSize().width())
        rebuild();
    if (atEnd)
        return scrollToEnd();
    _arranged = false;
    arrange();
}

void StyledTextArea::changeEvent(QEvent* event)
{
    QAbstractScrollArea::changeEvent(event);
    const auto type = event->type();
    if (type == QEvent::PaletteChange || type == QEvent::FontChange || type == QEvent::StyleChange)
        rebuild();
}

std::pair<std::size_t, std::size_t> StyledTextArea::linesInSight()
{
    arrange();
    auto line = _top.line;
    while (line < _rows.lineCount() && topOf(line) < viewport()->height() - textMargin)
        ++line;
    return {_top.line, line};
}

TextStretch StyledTextArea::stretchInSight()
{
    const auto [first, end] = linesInSight();
    if (first == end)
        return {};
    const auto begin = layoutOf(first).rowStart(static_cast<int>(_top.row));
    // The last line may go on below.
    const auto rows = (viewport()->height() - textMargin - topOf(end - 1)) / _theme.rowHeight();
    const auto& last = layoutOf(end - 1);
    return {begin, rows < last.rows() ? last.rowStart(std::max(rows, 0)) : _lines.start(end)};
}

std::size_t StyledTextArea::offsetAt(QPoint point)
{
    if (_rows.lineCount() == 0)
        return 0;
    arrange();
    const int distance = point.y() - textMargin;
    const auto rows = distance >= 0 ? distance / _theme.rowHeight() : -1;
    const auto row = _rows.rowsBefore(_top.line) + _top.row + rows;
    if (row >= _rows.total())
        return _text->size();
    const auto place = _rows.place(row);
    return layoutOf(place.line).offsetAt(static_cast<int>(place.row), row < 0 ? 0 : point.x() - textMargin);
}

QRect StyledTextArea::characterRect(std::size_t offset)
{
    const auto [first, end] = linesInSight();
    if (first == end || offset < _lines.start(first) || offset >= _lines.start(end))
        return {};
    const auto line = lineAt(offset);
    const auto& layout = layoutOf(line);
    const double left = layout.xOf(offset);
    const auto next = layout.next(offset, QTextLayout::SkipCharacters);
    const double right = layout.rowOf(next) == layout.rowOf(offset) ? layout.xOf(next) : left + _theme.characterWidth();
    return QRectF(textMargin + std::min(left, right), topOf(line) + layout.rowOf(offset) * _theme.rowHeight(),
                  std::abs(right - left), _theme.rowHeight())
        .toAlignedRect();
}

} // namespace platform::ui
