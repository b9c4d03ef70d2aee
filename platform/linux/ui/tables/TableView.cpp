#include "platform/ui/TableView.h"

#include "platform/linux/ui/controls/ControlNative.h"
#include "platform/linux/ui/tables/DataTable.h"
#include "platform/linux/ui/windows/WrapControls.h"

#include <algorithm>
#include <limits>

namespace platform::ui {

namespace {

struct TableViewNative : ControlNative {
    using ControlNative::ControlNative;

    ~TableViewNative() override
    {
        if (auto* const table = as<DataTable>())
            table->rows().textOfCell = nullptr;
    }

    std::weak_ptr<TableViewDataSource> dataSource;
};

TableViewNative& tableNative(const View& view)
{
    return static_cast<TableViewNative&>(view.native());
}

} // namespace

std::shared_ptr<TableView> wrapTableView(DataTable& table)
{
    return wrapWidget<TableView, TableViewNative>(&table);
}

TableView::TableView(std::unique_ptr<Native> native) : Control(std::move(native))
{
    auto& table = tableNative(*this);
    widgetOf<DataTable>(*this).rows().textOfCell = [this, &table](const QString& column, int row) {
        const auto source = table.dataSource.lock();
        if (!source)
            return QString();
        return qtString(source->tableView(*this, column.toStdString(), static_cast<std::size_t>(row)).stringValue);
    };
}

void TableView::setDataSource(std::weak_ptr<TableViewDataSource> dataSource)
{
    tableNative(*this).dataSource = std::move(dataSource);
}

void TableView::reloadData()
{
    const auto source = tableNative(*this).dataSource.lock();
    const auto count = source ? source->numberOfRowsInTableView(*this) : 0;
    widgetOf<DataTable>(*this).reload(static_cast<int>(std::min<std::size_t>(count, std::numeric_limits<int>::max())));
}

std::size_t TableView::numberOfRows() const
{
    return static_cast<std::size_t>(widgetOf<DataTable>(*this).rows().rowCount());
}

int TableView::selectedRow() const
{
    const auto& table = widgetOf<DataTable>(*this);
    return table.selectionModel()->hasSelection() ? table.selectionModel()->selectedIndexes().first().row() : -1;
}

void TableView::selectRow(int row)
{
    auto& table = widgetOf<DataTable>(*this);
    table.selectionModel()->clear(); // with the row that has the keyboard
    if (row >= 0 && row < table.rows().rowCount())
        table.setCurrentIndex(table.rows().index(row, 0));
}

void TableView::scrollRowToVisible(std::size_t row)
{
    auto& table = widgetOf<DataTable>(*this);
    if (row < numberOfRows())
        table.scrollTo(table.rows().index(static_cast<int>(row), 0));
}

TableCellView TableView::makeView(const std::string& identifier) const
{
    return {identifier, {}};
}

std::vector<std::string> TableView::columnIdentifiers() const
{
    std::vector<std::string> identifiers;
    for (const auto& column : widgetOf<DataTable>(*this).columns())
        identifiers.push_back(column.toStdString());
    return identifiers;
}

void TableView::setPlaceholder(const std::string& text)
{
    widgetOf<DataTable>(*this).setPlaceholderText(qtString(text));
}

std::string TableView::placeholder() const
{
    return widgetOf<DataTable>(*this).placeholderText().toStdString();
}

} // namespace platform::ui
