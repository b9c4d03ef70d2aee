#pragma once

#include <vector>

// The menu bar as plain values.
namespace platform::macos {

enum class MenuRole { Ordinary, Application, Services, Window, Help };

enum ModifierKeys : unsigned { Command = 0, CommandShift = 1, CommandOption = 2 };

struct MenuItemDescription {
    const char* title = "";      // English, looked up when shown; none for a separator
    const char* identifier = ""; // of an outlet
    const char* selector = "";   // of the platform's own action, for an item that needs nothing of us
    const char* key = "";
    ModifierKeys modifiers = Command;
    int tag = 0;                           // tells the platform's own action what to do
    MenuRole submenu = MenuRole::Ordinary; // Services: the item holds that menu

    bool isSeparator() const { return *title == '\0'; }
};

struct MenuDescription {
    const char* title = "";
    MenuRole role = MenuRole::Ordinary;
    std::vector<MenuItemDescription> items = {};
};

// From left to right; the first is the application's own.
const std::vector<MenuDescription>& mainMenuDescription();

} // namespace platform::macos
