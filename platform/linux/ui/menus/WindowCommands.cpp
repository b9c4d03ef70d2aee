#include "platform/linux/ui/menus/WindowCommands.h"

#include <QAction>
#include <QApplication>

namespace platform::ui {

namespace {

void bringAllToFront()
{
    auto* const active = QApplication::activeWindow();
    for (auto* const widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->windowType() == Qt::Window)
            widget->raise();
    }
    if (active && active->windowType() == Qt::Window)
        active->raise();
}

} // namespace

WindowCommands::WindowCommands(QMainWindow& window) : QObject(&window), _menuWindow(window) { }

void WindowCommands::connectAction(QAction& action, MenuCommand command)
{
    connect(&action, &QAction::triggered, this, [this, command] {
        if (command == MenuCommand::Minimize)
            window().showMinimized();
        else if (command == MenuCommand::Close)
            window().close();
        else
            bringAllToFront();
    });
}

QWidget& WindowCommands::window() const
{
    auto* const active = QApplication::activeWindow();
    return active ? *active : _menuWindow;
}

} // namespace platform::ui
