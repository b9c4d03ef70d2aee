#pragma once

#include <functional>
#include <QAbstractTableModel>
#include <QStringList>

namespace platform::ui {

// Rows that are asked for their texts when they are looked at.
class DataTableModel : public QAbstractTableModel {
    Q_OBJECT

public:
    using QAbstractTableModel::QAbstractTableModel;

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

    void setRowCount(int count);

    QStringList columns;       // their identifiers, which are the titles' keys too
    QStringList numberColumns; // those among them whose texts stand at the trailing edge
    std::function<QString(const QString& column, int row)> textOfCell;

private:
    int _rowCount = 0;
};

} // namespace platform::ui
