#pragma once

#include "platform/ui/MenuBar.h"

// The application's menu bar by the convention. It is the same on every platform but for what a convention asks for:
// where to quit and to close, the key to find, and the items of the system's own menu.
platform::ui::MenuBarDescription mainMenu(platform::ui::MenuConvention convention);
