#pragma once

#include "platform/ui/Menu.h"

#include <QAction>
#include <QPointer>

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

struct MenuItem::Native {
    QPointer<QAction> action;
};

} // namespace platform::ui
