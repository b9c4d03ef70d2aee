#pragma once

#include "platform/ui/Menu.h"

#include <map>
#include <memory>
#include <string>

namespace platform::ui {

using NamedMenuItems = std::map<std::string, std::shared_ptr<MenuItem>, std::less<>>;

// Makes the menu bar the application's. Items with an identifier are returned.
NamedMenuItems installMainMenu();

} // namespace platform::ui
