#pragma once

#include <functional>
#include <QMainWindow>
#include <string>
#include <utility>

class QPushButton;

namespace platform::ui {

// A window whose default button answers Return, whose button with the property "answersEscape" answers Escape, and
// whose Tab key visits its controls from top to bottom however its rows came and went.
class InterfaceWindow : public QMainWindow {
    Q_OBJECT

public:
    using QMainWindow::QMainWindow;

    void setOrdersTabsByPosition(bool orders) { _ordersTabsByPosition = orders; }
    // See Window.
    void setFrameAutosaveName(const std::string& name);
    // Makes it no larger than its screen has room for, and its content one to scroll where that needs more.
    void fitToScreen();
    void setUndo(std::function<void()> undo) { _undo = std::move(undo); }
    bool canUndo() const { return static_cast<bool>(_undo); }
    void undo();
    void setCloseHandler(std::function<void()> handler) { _closeHandler = std::move(handler); }

protected:
    bool event(QEvent* event) override;
    // Without the window that has the menus nothing could be reached, so the others close before it.
    void closeEvent(QCloseEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void hideEvent(QHideEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidgetList controlsByPosition() const;
    void orderTabs() const;
    QSize leastSize() const;
    void scrollContent();
    QPushButton* buttonForReturn() const;
    QPushButton* buttonForEscape() const;

    std::function<void()> _undo;
    std::function<void()> _closeHandler;
    bool _ordersTabsByPosition = false;
    std::string _frameKey; // of the user defaults; empty for a window that is not remembered
};

} // namespace platform::ui
