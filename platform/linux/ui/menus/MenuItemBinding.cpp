#include "platform/linux/ui/menus/MenuItemBinding.h"

#include <QAction>
#include <QMenu>

namespace platform::ui {

MenuItemBinding& MenuItemBinding::of(QAction& action)
{
    auto* const existing = action.findChild<MenuItemBinding*>({}, Qt::FindDirectChildrenOnly);
    return existing ? *existing : *new MenuItemBinding(action);
}

MenuItemBinding::MenuItemBinding(QAction& action) : QObject(&action)
{
    connect(&action, &QAction::triggered, this, [this] {
        const auto kept = perform;
        if (kept && isEnabled())
            kept();
    });
    enableWhileMenuIsOpen(action, *this, [this] { return isEnabled(); });
}

QMenu* menuOf(const QAction& action)
{
    for (auto* const object : action.associatedObjects()) {
        if (auto* const menu = qobject_cast<QMenu*>(object))
            return menu;
    }
    return nullptr;
}

void enableWhileMenuIsOpen(QAction& action, QObject& receiver, std::function<bool()> isEnabled)
{
    auto* const menu = menuOf(action);
    if (!menu)
        return;
    QObject::connect(menu, &QMenu::aboutToShow, &receiver,
                     [&action, isEnabled = std::move(isEnabled)] { action.setEnabled(isEnabled()); });
    QObject::connect(menu, &QMenu::aboutToHide, &receiver, [&action] { action.setEnabled(true); });
}

} // namespace platform::ui
