#pragma once

#include "platform/ui/Menu.h"

#include <QAction>
#include <QPointer>

namespace platform::ui {

struct MenuItem::Native {
    QPointer<QAction> action;
};

} // namespace platform::ui
