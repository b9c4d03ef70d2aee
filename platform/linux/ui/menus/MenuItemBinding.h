#pragma once

#include "platform/ui/Menu.h"

#include <QObject>

class QAction;
class QMenu;

namespace platform::ui {

// What a menu item does; it belongs to the action, so that every MenuItem of that action shares it.
class MenuItemBinding : public QObject {
    Q_OBJECT

public:
    static MenuItemBinding& of(QAction& action);

    bool isEnabled() const { return !validator || validator(); }

    MenuItem::Action perform;
    std::function<bool()> validator;

private:
    explicit MenuItemBinding(QAction& action);
};

// The menu that shows the action; null without one.
QMenu* menuOf(const QAction& action);

// A disabled action would not hear its key, so it is disabled only while its menu is open.
void enableWhileMenuIsOpen(QAction& action, QObject& receiver, std::function<bool()> isEnabled);

} // namespace platform::ui
