#pragma once

#include "platform/ui/Interface.h"

namespace platform::ui {

// Makes the menu bar the application's. The items are found by their identifiers.
NamedMenuItems installMenuBar(const MenuBarDescription& menus);

} // namespace platform::ui
