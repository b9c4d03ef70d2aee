#pragma once

#include "platform/linux/ui/styledtext/StyledTextArea.h"

#include <QAccessibleWidget>

namespace platform::ui {

// What assistive tools see of a styled text: a text of many lines that is read only. Their offsets are UTF-16 units.
class StyledTextAccessible : public QAccessibleWidget, public QAccessibleTextInterface {
public:
    // Has the toolkit make one for every styled text.
    static void install();

    explicit StyledTextAccessible(StyledTextArea& area);

    void* interface_cast(QAccessible::InterfaceType type) override;
    QAccessible::State state() const override;

    void selection(int index, int* start, int* end) const override;
    int selectionCount() const override;
    void addSelection(int start, int end) override;
    void removeSelection(int index) override;
    void setSelection(int index, int start, int end) override;
    int cursorPosition() const override;
    void setCursorPosition(int position) override;

    QString text(QAccessible::Text type) const override;
    QString text(int start, int end) const override;
    QString textBeforeOffset(int offset, QAccessible::TextBoundaryType type, int* start, int* end) const override;
    QString textAfterOffset(int offset, QAccessible::TextBoundaryType type, int* start, int* end) const override;
    QString textAtOffset(int offset, QAccessible::TextBoundaryType type, int* start, int* end) const override;
    int characterCount() const override;
    QRect characterRect(int offset) const override;
    int offsetAtPoint(const QPoint& point) const override;
    void scrollToSubstring(int start, int end) override;
    QString attributes(int offset, int* start, int* end) const override;

private:
    StyledTextArea& area() const;
    const StyledText& styledText() const { return *area().text(); }
    std::size_t offsetOf(int position) const;
    int positionOf(std::size_t offset) const;
    QString lineText(std::size_t line, int* start, int* end) const;
};

} // namespace platform::ui
