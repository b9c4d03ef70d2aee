#pragma once

#include <QMainWindow>

class QAction;

namespace platform::ui {

// The Window menu: an action whose property "windowCommand" is "minimise" or "close" acts on the window that the user
// is in, and "bringAllToFront" on all of them.
class WindowCommands : public QObject {
    Q_OBJECT

public:
    // Belongs to the window.
    explicit WindowCommands(QMainWindow& window);

private:
    void connectAction(QAction& action);
    QWidget& window() const;

    QMainWindow& _menuWindow;
};

} // namespace platform::ui
