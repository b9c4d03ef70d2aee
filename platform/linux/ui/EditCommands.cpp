#include "platform/linux/ui/EditCommands.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>

namespace platform::ui {

EditCommands::EditCommands(QMainWindow& window) : QObject(&window)
{
    connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
        if (!qobject_cast<QMenuBar*>(now))
            _focused = now;
    });
    for (auto* const action : window.findChildren<QAction*>()) {
        if (action->property("editCommand").isValid())
            connectAction(*action);
    }
}

void EditCommands::connectAction(QAction& action)
{
    const auto command = action.property("editCommand").toByteArray();
    connect(&action, &QAction::triggered, this, [this, command] {
        if (auto* const line = field())
            QMetaObject::invokeMethod(line, command.constData());
    });
    // As for every item, disabled only while the menu is open.
    for (auto* const object : action.associatedObjects()) {
        if (auto* const menu = qobject_cast<QMenu*>(object)) {
            connect(menu, &QMenu::aboutToShow, this, [this, &action] { action.setEnabled(field()); });
            connect(menu, &QMenu::aboutToHide, this, [&action] { action.setEnabled(true); });
        }
    }
}

QLineEdit* EditCommands::field() const
{
    if (qobject_cast<QAbstractSpinBox*>(_focused))
        return _focused->findChild<QLineEdit*>();
    return qobject_cast<QLineEdit*>(_focused);
}

} // namespace platform::ui
