#pragma once

#include "platform/linux/ui/windows/InterfaceWindow.h"
#include "platform/ui/Interface.h"

namespace platform::ui {

// Gives the window the menu bar, whose keys work in every window of the application. The items are found by their
// identifiers, which are also the actions' object names.
NamedMenuItems addMenuBar(InterfaceWindow& window, const MenuBarDescription& menus);

} // namespace platform::ui
