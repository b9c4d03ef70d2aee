#include "platform/linux/ui/styledtext/StyledTextArea.h"
#include "platform/linux/ui/textlayout/TextStretchData.h"
#include "platform/Localization.h"

#include <algorithm>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyleHints>
#include <QTimerEvent>

namespace platform::ui {

namespace {

constexpr int dragScrollMilliseconds = 50;

constexpr QKeySequence::StandardKey ownKeys[] = {QKeySequence::Copy, QKeySequence::SelectAll};

} // namespace

TextStretch StyledTextArea::selection() const
{
    const auto [begin, end] = std::minmax(_anchor, _head);
    return {begin, end};
}

QString StyledTextArea::selectedText() const
{
    return plainText(*_text, selection());
}

void StyledTextArea::setSelection(std::size_t anchor, std::size_t head)
{
    anchor = std::min(anchor, _text->size());
    head = std::min(head, _text->size());
    if (anchor == _anchor && head == _head)
        return;
    _anchor = anchor;
    _head = head;
    _showsMatch = false;
    viewport()->update();
    Q_EMIT selectionChanged();
}

void StyledTextArea::select(std::size_t anchor, std::size_t head)
{
    setSelection(anchor, head);
    scrollTo(_head);
}

void StyledTextArea::selectMatch(TextStretch match)
{
    select(match.begin, match.end);
    _showsMatch = true;
    viewport()->update();
}

void StyledTextArea::selectAll()
{
    setSelection(0, _text->size());
}

void StyledTextArea::copy() const
{
    if (!selection().isEmpty())
        QApplication::clipboard()->setMimeData(new TextStretchData(_text, selection()));
}

bool StyledTextArea::event(QEvent* event)
{
    // These keys are ours, though the menu bar may have them too.
    if (event->type() == QEvent::ShortcutOverride) {
        auto& key = *static_cast<QKeyEvent*>(event);
        if (std::ranges::any_of(ownKeys, [&key](auto own) { return key.matches(own); })) {
            event->accept();
            return true;
        }
    }
    return QAbstractScrollArea::event(event);
}

void StyledTextArea::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Copy))
        copy();
    else if (event->matches(QKeySequence::SelectAll))
        selectAll();
    else if (!extendByKey(*event) && !scrollByKey(*event))
        QAbstractScrollArea::keyPressEvent(event);
}

bool StyledTextArea::scrollByKey(const QKeyEvent& event)
{
    auto& bar = *verticalScrollBar();
    switch (event.key()) {
    case Qt::Key_Up:
        bar.triggerAction(QAbstractSlider::SliderSingleStepSub);
        return true;
    case Qt::Key_Down:
        bar.triggerAction(QAbstractSlider::SliderSingleStepAdd);
        return true;
    case Qt::Key_PageUp:
        bar.triggerAction(QAbstractSlider::SliderPageStepSub);
        return true;
    case Qt::Key_PageDown:
        bar.triggerAction(QAbstractSlider::SliderPageStepAdd);
        return true;
    case Qt::Key_Home:
        bar.triggerAction(QAbstractSlider::SliderToMinimum);
        return true;
    case Qt::Key_End:
        scrollToEnd();
        return true;
    default:
        return false;
    }
}

bool StyledTextArea::extendByKey(const QKeyEvent& event)
{
    if (!(event.modifiers() & Qt::ShiftModifier) || _text->empty())
        return false;
    switch (event.key()) {
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End:
        select(_anchor, headAfter(event));
        return true;
    default:
        return false;
    }
}

std::size_t StyledTextArea::headAfter(const QKeyEvent& event)
{
    const bool control = event.modifiers() & Qt::ControlModifier;
    const auto mode = control ? QTextLayout::SkipWords : QTextLayout::SkipCharacters;
    const auto place = placeOf(_head);
    const auto& layout = layoutOf(place.line);
    const auto row = static_cast<int>(place.row);
    switch (event.key()) {
    case Qt::Key_Left:
        // From the start of a line to the end of the one above, before its newline.
        if (_head == layout.stretch().begin && place.line > 0)
            return layoutOf(place.line - 1).previous(_head, mode);
        return layout.previous(_head, mode);
    case Qt::Key_Right:
        return layout.next(_head, mode);
    case Qt::Key_Up:
        return rowsAway(-1);
    case Qt::Key_Down:
        return rowsAway(1);
    case Qt::Key_PageUp:
        return rowsAway(-rowsInSight());
    case Qt::Key_PageDown:
        return rowsAway(rowsInSight());
    case Qt::Key_Home:
        return control ? 0 : layout.rowStart(row);
    default:
        return control ? _text->size() : layout.rowEnd(row);
    }
}

std::size_t StyledTextArea::rowsAway(std::int64_t rows)
{
    const auto place = placeOf(_head);
    const double x = layoutOf(place.line).xOf(_head);
    const auto target = _rows.rowsBefore(place.line) + place.row + rows;
    if (target < 0)
        return 0;
    if (target >= _rows.total())
        return _text->size();
    const auto there = _rows.place(target);
    return layoutOf(there.line).offsetAt(static_cast<int>(there.row), x);
}

void StyledTextArea::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const auto offset = offsetAt(event->pos());
    const bool third = _sinceDoubleClick.isValid()
        && _sinceDoubleClick.elapsed() < QGuiApplication::styleHints()->mouseDoubleClickInterval();
    _sinceDoubleClick.invalidate();
    if (event->modifiers() & Qt::ShiftModifier) {
        _unit = Unit::Character;
        return setSelection(_anchor, offset);
    }
    _pressed = {offset, offset};
    _unit = third ? Unit::Line : Unit::Character;
    if (third && !_text->empty())
        _pressed = layoutOf(lineAt(offset)).stretch();
    setSelection(_pressed.begin, _pressed.end);
}

void StyledTextArea::mouseDoubleClickEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || _text->empty())
        return;
    const auto offset = offsetAt(event->pos());
    _unit = Unit::Word;
    _pressed = layoutOf(lineAt(offset)).wordAt(offset);
    _sinceDoubleClick.start();
    setSelection(_pressed.begin, _pressed.end);
}

void StyledTextArea::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton))
        return;
    _dragged = event->pos();
    extendTo(_dragged);
    if (viewport()->rect().contains(_dragged))
        _dragScroll.stop();
    else if (!_dragScroll.isActive())
        _dragScroll.start(dragScrollMilliseconds, this);
}

void StyledTextArea::extendTo(QPoint point)
{
    const auto offset = offsetAt(point);
    TextStretch reached{offset, offset};
    if (_unit != Unit::Character && !_text->empty()) {
        const auto& layout = layoutOf(lineAt(offset));
        reached = _unit == Unit::Line ? layout.stretch() : layout.wordAt(offset);
    }
    if (reached.begin < _pressed.begin)
        setSelection(_pressed.end, reached.begin);
    else
        setSelection(_pressed.begin, std::max(reached.end, _pressed.end));
}

void StyledTextArea::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton)
        return;
    _dragScroll.stop();
    auto* const clipboard = QApplication::clipboard();
    if (clipboard->supportsSelection() && !selection().isEmpty())
        clipboard->setMimeData(new TextStretchData(_text, selection()), QClipboard::Selection);
}

void StyledTextArea::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != _dragScroll.timerId())
        return QAbstractScrollArea::timerEvent(event);
    auto& bar = *verticalScrollBar();
    bar.setValue(bar.value() + (_dragged.y() < 0 ? -1 : _dragged.y() > viewport()->height() ? 1 : 0));
    extendTo(_dragged);
}

void StyledTextArea::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu menu(this);
    const bool any = !_text->empty();
    const auto add = [&](const std::string& title, auto action, bool enabled) {
        menu.addAction(QString::fromStdString(title), this, action)->setEnabled(enabled);
    };
    add(localizedString("Copy"), &StyledTextArea::copy, !selection().isEmpty());
    add(localizedString("Select All"), &StyledTextArea::selectAll, any);
    menu.addSeparator();
    add(localizedString("Find…"), &StyledTextArea::findRequested, any);
    menu.exec(event->globalPos());
}

} // namespace platform::ui
