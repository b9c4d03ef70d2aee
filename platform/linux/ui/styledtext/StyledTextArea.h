#pragma once

#include "platform/linux/ui/textlayout/RowIndex.h"
#include "platform/linux/ui/textlayout/TextLineLayout.h"
#include "platform/linux/ui/textlayout/TextLines.h"
#include "platform/linux/ui/textlayout/TextTheme.h"

#include <map>
#include <memory>
#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QElapsedTimer>

namespace platform::ui {

// Shows a styled text of any length to be read, selected and copied. Only lines in sight, and a page above them, are
// laid out; how many rows the others take is guessed from their lengths until then, so taking a text of a million
// lines, scrolling and resizing cost little. Offsets are bytes of the text.
class StyledTextArea : public QAbstractScrollArea {
    Q_OBJECT

public:
    explicit StyledTextArea(QWidget* parent = nullptr);

    const std::shared_ptr<const StyledText>& text() const { return _text; }
    // Returns the one before.
    std::shared_ptr<const StyledText> setText(std::shared_ptr<const StyledText> text);
    void setSelectedTextAttributes(const SelectedTextAttributes& attributes);
    // Stands in the middle while there is no text.
    const QString& placeholder() const { return _placeholder; }
    void setPlaceholder(const QString& placeholder);

    TextStretch selection() const;
    std::size_t selectionHead() const { return _head; } // the end that moves
    QString selectedText() const;
    // From the first to the second, which is brought into sight.
    void select(std::size_t anchor, std::size_t head);
    // The same for what was found, which looks different until something else is selected.
    void selectMatch(TextStretch match);
    bool showsMatch() const { return _showsMatch; }

    void scrollToEnd();
    void scrollTo(std::size_t offset);

    std::size_t offsetAt(QPoint point);
    // In the viewport; empty when the character is out of sight.
    QRect characterRect(std::size_t offset);
    // The first line and the first one after those in sight.
    std::pair<std::size_t, std::size_t> linesInSight();
    // From the first row in sight to the last one.
    TextStretch stretchInSight();

public Q_SLOTS:
    void copy() const;
    void selectAll();

Q_SIGNALS:
    void textReplaced();
    void selectionChanged();
    void findRequested();

protected:
    bool event(QEvent* event) override;
    bool viewportEvent(QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    using Place = RowIndex::Place;

    void rebuild();     // every line anew, for a new width or theme
    void arrange();     // lays out what is in sight
    bool arrangeOnce(); // true when guesses have been corrected
    void updateScrollBar();
    void forgetDistantLayouts();
    TextLineLayout& layoutOf(std::size_t line);
    std::size_t lineAt(std::size_t offset);
    void settle(std::size_t line);
    void scrollToPlace(Place place);
    Place placeOf(std::size_t offset);

    std::int64_t rowsInSight() const;
    double textWidth() const;
    int topOf(std::size_t line) const; // in the viewport

    void setSelection(std::size_t anchor, std::size_t head);
    void extendTo(QPoint point);
    bool scrollByKey(const QKeyEvent& event);
    bool extendByKey(const QKeyEvent& event);
    std::size_t headAfter(const QKeyEvent& event);
    std::size_t rowsAway(std::int64_t rows);

    std::shared_ptr<const StyledText> _text;
    QString _placeholder;
    TextLines _lines;
    SelectedTextAttributes _selectedAttributes{NamedColor::SelectedTextBackground, {}};
    TextTheme _theme;
    RowIndex _rows;
    std::map<std::size_t, TextLineLayout> _layouts; // by line
    Place _top;                                     // the row at the top of the viewport
    bool _arranged = false;
    std::size_t _anchor = 0;
    std::size_t _head = 0;
    bool _showsMatch = false;
    TextStretch _pressed; // the word or line that a click with drag began with
    enum class Unit { Character, Word, Line } _unit = Unit::Character;
    QElapsedTimer _sinceDoubleClick;
    QPoint _dragged;
    QBasicTimer _dragScroll;
};

} // namespace platform::ui
