#pragma once

#include "platform/ui/MenuBar.h"

#include <QMainWindow>

class QAction;

namespace platform::ui {

// The Window menu: Minimize and Close act on the window that the user is in, BringAllToFront on all of them.
class WindowCommands : public QObject {
    Q_OBJECT

public:
    // Belongs to the window.
    explicit WindowCommands(QMainWindow& window);

    void connectAction(QAction& action, MenuCommand command);

private:
    QWidget& window() const;

    QMainWindow& _menuWindow;
};

} // namespace platform::ui
