#pragma once

#include <QMainWindow>

class QPushButton;

namespace platform::ui {

// A window whose default button answers Return, and whose Tab key visits its controls from top to bottom however its
// rows came and went.
class InterfaceWindow : public QMainWindow {
    Q_OBJECT

public:
    using QMainWindow::QMainWindow;

    void setOrdersTabsByPosition(bool orders) { _ordersTabsByPosition = orders; }

protected:
    // Without the window that has the menus nothing could be reached, so the others close before it.
    void closeEvent(QCloseEvent* event) override;
    bool focusNextPrevChild(bool next) override;
    void keyPressEvent(QKeyEvent* event) override;
    void showEvent(QShowEvent* event) override;

private:
    QWidgetList controlsByPosition() const;
    void orderTabs() const;
    QPushButton* buttonForReturn() const;

    bool _ordersTabsByPosition = false;
};

} // namespace platform::ui
