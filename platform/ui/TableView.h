#pragma once

#include "platform/ui/Control.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace platform::ui {

struct TableCellView {
    std::string identifier;
    std::string stringValue;
};

class TableView;

class TableViewDataSource {
public:
    virtual ~TableViewDataSource() = default;
    virtual std::size_t numberOfRowsInTableView(const TableView& table) = 0;
    // Asked only for cells that are looked at.
    virtual TableCellView tableView(const TableView& table, const std::string& columnIdentifier, std::size_t row) = 0;
};

// Rows of texts in titled columns, of which the user selects one row.
class TableView : public Control {
public:
    explicit TableView(std::unique_ptr<Native> native);

    // Held weakly.
    void setDataSource(std::weak_ptr<TableViewDataSource> dataSource);
    // Asks the data source anew. The selected row stays selected while there is one of that number.
    void reloadData();
    // As of the last reload.
    std::size_t numberOfRows() const;

    // -1 when none is selected.
    int selectedRow() const;
    // A row out of range selects none.
    void selectRow(int row);
    // Scrolls no farther than it takes. A row out of range is passed over.
    void scrollRowToVisible(std::size_t row);

    // A new cell view of the kind that the interface file has for the column.
    TableCellView makeView(const std::string& identifier) const;
    std::vector<std::string> columnIdentifiers() const;

    // Shown in place of rows when there are none.
    void setPlaceholder(const std::string& text);
    std::string placeholder() const;
};

} // namespace platform::ui
