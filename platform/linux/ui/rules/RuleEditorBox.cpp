#include "platform/linux/ui/rules/RuleEditorBox.h"

#include "platform/linux/ui/rules/RuleRow.h"

#include <algorithm>
#include <limits>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QScrollBar>
#include <utility>

namespace platform::ui {

namespace {

constexpr int UsualRowsInSight = 5;
constexpr int LeastRowsInSight = 2;

} // namespace

RuleEditorBox::RuleEditorBox(QWidget* parent) : QAbstractScrollArea(parent)
{
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    viewport()->setBackgroundRole(QPalette::Base);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

RuleEditorBox::~RuleEditorBox()
{
    for (const auto& [index, row] : _live)
        row->dismiss();
}

void RuleEditorBox::insertRow(int index, Row row)
{
    if (hasKeyboard() && index < numberOfRows() && index <= _focused.row)
        ++_focused.row;
    _rows.insert(_rows.begin() + index, std::move(row));
    renumberLiveRows(index, 1);
    rowsDidChange();
}

void RuleEditorBox::setRow(int index, Row row)
{
    const auto live = _live.find(index);
    if (live != _live.end())
        dropLiveRow(_live.extract(live).mapped(), index);
    _rows[static_cast<std::size_t>(index)] = std::move(row);
    rowsDidChange();
}

void RuleEditorBox::removeRow(int index)
{
    const auto live = _live.find(index);
    if (live != _live.end())
        dropLiveRow(_live.extract(live).mapped(), index);
    _rows.erase(_rows.begin() + index);
    renumberLiveRows(index, -1);
    rowsDidChange();
}

void RuleEditorBox::removeAllRows()
{
    dropRowsOutOfSight(0, 0);
    _rows.clear();
    rowsDidChange();
}

// Rows are placed once for all changes, before the next painting.
void RuleEditorBox::rowsDidChange()
{
    if (_rowSize.isEmpty() && !_rows.empty())
        measure();
    QCoreApplication::postEvent(this, new QEvent(QEvent::LayoutRequest));
}

void RuleEditorBox::measure()
{
    auto& row = _live[0];
    if (!row)
        row = newLiveRow(0);
    row->ensurePolished();
    _rowSize = row->sizeHint();
    updateGeometry();
}

void RuleEditorBox::renumberLiveRows(int from, int difference)
{
    std::map<int, RuleRow*> renumbered;
    for (const auto& [index, row] : _live)
        renumbered.emplace(index < from ? index : index + difference, row);
    _live = std::move(renumbered);
}

int RuleEditorBox::rowsInSight() const
{
    return std::max(1, viewport()->height() / std::max(1, _rowSize.height()));
}

void RuleEditorBox::placeRows()
{
    if (!isVisible() || std::exchange(_isPlacing, true))
        return;
    const int count = numberOfRows();
    auto& bar = *verticalScrollBar();
    bar.setRange(0, std::max(0, count - rowsInSight()));
    bar.setPageStep(rowsInSight());
    const int first = bar.value();
    const int end = std::min(count, first + rowsInSight());
    dropRowsOutOfSight(first, end);
    for (int index = first; index < end; ++index)
        placeRow(index, index - first);
    _isPlacing = false;
    if (hasKeyboard() && count > 0) {
        _focused.row = std::min(_focused.row, count - 1);
        giveKeyboardTo(_focused);
    }
}

void RuleEditorBox::dropRowsOutOfSight(int first, int end)
{
    const auto all = std::exchange(_live, {});
    for (const auto& [index, row] : all) {
        if (index >= first && index < end)
            _live.emplace(index, row);
    }
    for (const auto& [index, row] : all) {
        if (!_live.contains(index))
            dropLiveRow(row, index);
    }
}

void RuleEditorBox::placeRow(int index, int position)
{
    RuleRow*& row = _live[index];
    if (!row)
        row = newLiveRow(index);
    row->setNumber(index + 1);
    row->setRemovable(numberOfRows() > 1);
    row->setBackgroundRole(index % 2 == 0 ? QPalette::Base : QPalette::AlternateBase);
    row->setGeometry(0, position * _rowSize.height(), viewport()->width(), _rowSize.height());
    row->show();
}

RuleRow* RuleEditorBox::newLiveRow(int index)
{
    auto* const row = new RuleRow(_rows[static_cast<std::size_t>(index)].displayValues, viewport());
    row->setAutoFillBackground(true);
    connect(row, &RuleRow::addPressed, this, [this, row] { Q_EMIT addPressed(indexOf(row)); });
    connect(row, &RuleRow::removePressed, this, [this, row] { remove(indexOf(row)); });
    return row;
}

void RuleEditorBox::dropLiveRow(RuleRow* row, int index)
{
    const int stop = row->stopOf(window()->focusWidget());
    if (stop >= 0) {
        _focused = {index, stop};
        setFocus(Qt::OtherFocusReason);
    }
    row->dismiss();
}

int RuleEditorBox::indexOf(const RuleRow* row) const
{
    return std::ranges::find(_live, row, [](const auto& live) { return live.second; })->first;
}

void RuleEditorBox::remove(int index)
{
    if (numberOfRows() > 1)
        Q_EMIT removePressed(index);
}

bool RuleEditorBox::hasKeyboard() const
{
    return window()->focusWidget() == this;
}

std::optional<RuleEditorBox::Place> RuleEditorBox::focusedPlace() const
{
    if (hasKeyboard())
        return _focused;
    for (const auto& [index, row] : _live) {
        const int stop = row->stopOf(window()->focusWidget());
        if (stop >= 0)
            return Place{index, stop};
    }
    return std::nullopt;
}

void RuleEditorBox::scrollTo(int index)
{
    auto& bar = *verticalScrollBar();
    placeRows();
    bar.setValue(std::clamp(bar.value(), index - rowsInSight() + 1, index));
}

void RuleEditorBox::focusPlace(Place place)
{
    scrollTo(place.row);
    giveKeyboardTo(place);
}

// Nothing happens to a row out of sight. A stop that is disabled leaves it to the one before.
void RuleEditorBox::giveKeyboardTo(Place place)
{
    const auto live = _live.find(place.row);
    if (live == _live.end())
        return;
    RuleRow& row = *live->second;
    int stop = std::min(place.stop, row.numberOfStops() - 1);
    while (stop > 0 && !row.isStop(stop))
        --stop;
    row.focusStop(stop, Qt::TabFocusReason);
}

bool RuleEditorBox::focusNextPrevChild(bool next)
{
    const auto from = focusedPlace();
    if (!from)
        return QAbstractScrollArea::focusNextPrevChild(next);
    if (hasKeyboard())
        scrollTo(from->row);
    const auto live = _live.find(from->row);
    const int step = next ? 1 : -1;
    for (int stop = from->stop + step; live != _live.end() && stop >= 0 && stop < live->second->numberOfStops();
         stop += step) {
        if (live->second->isStop(stop)) {
            live->second->focusStop(stop, next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
            return true;
        }
    }
    const int row = from->row + step;
    if (row < 0 || row >= numberOfRows())
        return QAbstractScrollArea::focusNextPrevChild(next);
    focusPlace({row, next ? 0 : std::numeric_limits<int>::max()});
    return true;
}

void RuleEditorBox::keyPressEvent(QKeyEvent* event)
{
    const auto place = focusedPlace();
    const int page = event->key() == Qt::Key_PageDown ? rowsInSight()
        : event->key() == Qt::Key_PageUp              ? -rowsInSight()
                                                      : 0;
    if (place && event->key() == Qt::Key_Insert)
        Q_EMIT addPressed(place->row);
    else if (place && event->key() == Qt::Key_Delete)
        remove(place->row);
    else if (place && page != 0)
        focusPlace({std::clamp(place->row + page, 0, numberOfRows() - 1), place->stop});
    else
        QAbstractScrollArea::keyPressEvent(event);
}

bool RuleEditorBox::event(QEvent* event)
{
    if (event->type() == QEvent::LayoutRequest)
        placeRows();
    else if (event->type() == QEvent::Show)
        QCoreApplication::postEvent(this, new QEvent(QEvent::LayoutRequest));
    return QAbstractScrollArea::event(event);
}

void RuleEditorBox::changeEvent(QEvent* event)
{
    QAbstractScrollArea::changeEvent(event);
    const bool isOfSize = event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange;
    if (isOfSize && !std::exchange(_rowSize, {}).isEmpty() && !_rows.empty()) {
        dropRowsOutOfSight(0, 0);
        rowsDidChange();
    }
}

void RuleEditorBox::resizeEvent(QResizeEvent* event)
{
    QAbstractScrollArea::resizeEvent(event);
    QCoreApplication::postEvent(this, new QEvent(QEvent::LayoutRequest));
}

void RuleEditorBox::scrollContentsBy(int, int)
{
    placeRows();
}

QSize RuleEditorBox::sizeHint() const
{
    const int frame = 2 * frameWidth();
    return {_rowSize.width() + verticalScrollBar()->sizeHint().width() + frame,
            UsualRowsInSight * _rowSize.height() + frame};
}

QSize RuleEditorBox::minimumSizeHint() const
{
    return {sizeHint().width(), LeastRowsInSight * _rowSize.height() + 2 * frameWidth()};
}

} // namespace platform::ui
