#include "platform/linux/ui/tables/DataTable.h"

#include "platform/ui/Selection.h"

#include <algorithm>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QPainter>
#include <QScrollBar>

namespace platform::ui {

DataTable::DataTable(QWidget* parent) : QTreeView(parent)
{
    setModel(&_model);
    setUniformRowHeights(true); // so that only the rows in sight are measured
    setRootIsDecorated(false);
    setItemsExpandable(false);
    setAllColumnsShowFocus(true);
    setAlternatingRowColors(true);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setTextElideMode(Qt::ElideMiddle);
    header()->setStretchLastSection(false);
    header()->setResizeContentsPrecision(100); // rows from the first one in sight
    header()->setSectionsMovable(false);
    connect(header(), &QHeaderView::sectionResized, this, [this](int column) {
        const bool isByHand = QGuiApplication::mouseButtons() & Qt::LeftButton;
        if (isByHand && header()->sectionResizeMode(column) == QHeaderView::Interactive)
            _fitsColumns = false;
    });
}

void DataTable::setColumns(const QStringList& columns)
{
    _model.columns = columns;
    _model.setRowCount(0);
}

void DataTable::setStretchedColumn(const QString& column)
{
    _stretchedColumn = column;
    const auto index = columns().indexOf(column);
    if (index >= 0)
        header()->setSectionResizeMode(static_cast<int>(index), QHeaderView::Stretch);
}

void DataTable::setPlaceholderText(const QString& text)
{
    _placeholderText = text;
    setAccessibleDescription(_model.rowCount() == 0 ? text : QString());
    viewport()->update();
}

void DataTable::reload(int rowCount)
{
    const int selected = selectionAfterReload(currentIndex().row(), static_cast<std::size_t>(rowCount));
    const auto scrolled = verticalScrollBar()->value();
    _model.setRowCount(rowCount);
    if (_fitsColumns && rowCount > 0)
        fitColumns();
    if (selected >= 0) {
        setCurrentIndex(_model.index(selected, 0));
        executeDelayedItemsLayout();
        verticalScrollBar()->setValue(scrolled);
    }
    setPlaceholderText(_placeholderText);
}

// After the first time none becomes narrower, which would unsettle the reader.
void DataTable::fitColumns()
{
    const auto space = fontMetrics().averageCharWidth() * 2;
    for (int column = 0; column < _model.columnCount(); ++column) {
        if (header()->sectionResizeMode(column) == QHeaderView::Stretch)
            continue;
        const auto least = fontMetrics().horizontalAdvance(QStringLiteral("8,888.88 MB"));
        const auto wanted = std::max({sizeHintForColumn(column), header()->sectionSizeHint(column), least}) + space;
        setColumnWidth(column, _hasFitted ? std::max(columnWidth(column), wanted) : wanted);
    }
    _hasFitted = true;
}

void DataTable::paintEvent(QPaintEvent* event)
{
    QTreeView::paintEvent(event);
    if (_model.rowCount() > 0 || _placeholderText.isEmpty())
        return;
    QPainter painter(viewport());
    auto color = palette().color(QPalette::Text);
    color.setAlphaF(0.6F);
    painter.setPen(color);
    const auto margin = fontMetrics().averageCharWidth() * 2;
    painter.drawText(viewport()->rect().adjusted(margin, 0, -margin, 0), Qt::AlignCenter | Qt::TextWordWrap,
                     _placeholderText);
}

// Home and End lead to the first and the last row, as in a list; the toolkit's go to the columns' ends.
void DataTable::keyPressEvent(QKeyEvent* event)
{
    const bool isHome = event->key() == Qt::Key_Home;
    if ((isHome || event->key() == Qt::Key_End) && _model.rowCount() > 0)
        return setCurrentIndex(_model.index(isHome ? 0 : _model.rowCount() - 1, 0));
    QTreeView::keyPressEvent(event);
}

} // namespace platform::ui
