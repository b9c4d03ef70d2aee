#pragma once

#include "platform/linux/ui/tables/DataTableModel.h"

#include <QTreeView>

namespace platform::ui {

// The widget behind a table view, to promote to in interface files.
class DataTable : public QTreeView {
    Q_OBJECT
    Q_PROPERTY(QStringList columns READ columns WRITE setColumns)
    Q_PROPERTY(QStringList numberColumns READ numberColumns WRITE setNumberColumns)
    Q_PROPERTY(QString stretchedColumn READ stretchedColumn WRITE setStretchedColumn)
    Q_PROPERTY(QString placeholderText READ placeholderText WRITE setPlaceholderText)

public:
    explicit DataTable(QWidget* parent = nullptr);

    QStringList columns() const { return _model.columns; }
    void setColumns(const QStringList& columns);
    QStringList numberColumns() const { return _model.numberColumns; }
    void setNumberColumns(const QStringList& columns) { _model.numberColumns = columns; }
    // The one that takes the width that the others leave.
    QString stretchedColumn() const { return _stretchedColumn; }
    void setStretchedColumn(const QString& column);
    QString placeholderText() const { return _placeholderText; }
    void setPlaceholderText(const QString& text);

    DataTableModel& rows() { return _model; }
    void reload(int rowCount);

protected:
    void paintEvent(QPaintEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void fitColumns();

    DataTableModel _model;
    QString _stretchedColumn;
    QString _placeholderText;
    bool _fitsColumns = true; // until the user has chosen a width
    bool _hasFitted = false;
};

} // namespace platform::ui
