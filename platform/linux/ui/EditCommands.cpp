#include "platform/linux/ui/EditCommands.h"

#include "platform/linux/ui/MenuItemBinding.h"

#include <QAbstractSpinBox>
#include <QAction>
#include <QApplication>
#include <QLineEdit>
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
    enableWhileMenuIsOpen(action, *this, [this] { return field() != nullptr; });
}

QLineEdit* EditCommands::field() const
{
    if (qobject_cast<QAbstractSpinBox*>(_focused))
        return _focused->findChild<QLineEdit*>();
    return qobject_cast<QLineEdit*>(_focused);
}

} // namespace platform::ui
