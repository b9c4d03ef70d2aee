#pragma once

#include "platform/ui/RuleEditor.h"

#include <map>
#include <optional>
#include <QAbstractScrollArea>
#include <vector>

namespace platform::ui {

class RuleRow;

// A list of rows of which only those in sight have widgets. It scrolls by whole rows. Where the keyboard's row is out
// of sight, the box itself has the keyboard and gives it back when the row is in sight again.
class RuleEditorBox : public QAbstractScrollArea {
    Q_OBJECT

public:
    struct Row {
        RuleEditor::Criteria criteria;
        RuleEditor::DisplayValues displayValues;
    };

    explicit RuleEditorBox(QWidget* parent = nullptr);
    ~RuleEditorBox() override;

    int numberOfRows() const { return static_cast<int>(_rows.size()); }
    const Row& row(int index) const { return _rows.at(static_cast<std::size_t>(index)); }
    void insertRow(int index, Row row);
    void setRow(int index, Row row);
    void removeRow(int index);
    void removeAllRows();

    // Brings the row into sight and gives its first control the keyboard.
    void focusRow(int index) { focusPlace({index, 0}); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void addPressed(int row); // for a new row below
    void removePressed(int row);

protected:
    bool event(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool focusNextPrevChild(bool next) override;

private:
    struct Place {
        int row = 0;
        int stop = 0; // among the row's stops of the Tab key
    };

    void rowsDidChange();
    void measure();
    void placeRows();
    void dropRowsOutOfSight(int first, int end);
    void placeRow(int index, int position);
    RuleRow* newLiveRow(int index);
    void dropLiveRow(RuleRow* row, int index);
    void renumberLiveRows(int from, int difference);
    int rowsInSight() const;
    void scrollTo(int index);

    bool hasKeyboard() const; // itself, in place of a row
    std::optional<Place> focusedPlace() const;
    void focusPlace(Place place);
    void giveKeyboardTo(Place place);
    int indexOf(const RuleRow* row) const;
    void remove(int index);

    std::vector<Row> _rows;
    std::map<int, RuleRow*> _live; // by index
    QSize _rowSize;                // what a row asks for; empty before there was one
    Place _focused;                // while the box itself has the keyboard
    bool _isPlacing = false;
};

} // namespace platform::ui
