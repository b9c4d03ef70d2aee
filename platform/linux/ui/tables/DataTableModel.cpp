#include "platform/linux/ui/tables/DataTableModel.h"

#include "platform/Localization.h"

namespace platform::ui {

int DataTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : _rowCount;
}

int DataTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns.size());
}

QVariant DataTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid())
        return {};
    const auto& column = columns[index.column()];
    if (role == Qt::TextAlignmentRole)
        return QVariant(Qt::AlignVCenter | (numberColumns.contains(column) ? Qt::AlignRight : Qt::AlignLeft));
    if ((role == Qt::DisplayRole || role == Qt::ToolTipRole) && textOfCell)
        return textOfCell(column, index.row());
    return {};
}

QVariant DataTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal)
        return {};
    if (role == Qt::TextAlignmentRole)
        return data(createIndex(0, section), role);
    if (role == Qt::DisplayRole)
        return QString::fromStdString(localizedString(columns[section].toStdString()));
    return {};
}

void DataTableModel::setRowCount(int count)
{
    beginResetModel();
    _rowCount = count;
    endResetModel();
}

} // namespace platform::ui
