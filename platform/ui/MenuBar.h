#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The menu bar as plain values, which each platform makes its own menus of.
namespace platform::ui {

// Where users look for what concerns the application as a whole: in a menu of the system's that bears its name, or in
// the menus of its window.
enum class MenuConvention : std::uint8_t { ApplicationMenu, WindowMenus };

// That of this platform.
MenuConvention menuConvention();

enum class MenuRole : std::uint8_t { Ordinary, Application, Window, Help };

// What the platform does by itself when an item is chosen; the application sets no action for such an item.
enum class MenuCommand : std::uint8_t {
    None,
    // On the text that has the keyboard.
    Undo,
    Redo,
    Cut,
    Copy,
    Paste,
    SelectAll,
    Find,
    FindNext,
    FindPrevious,
    // On the window that the user is in, or on all.
    Minimize,
    Zoom,
    Close,
    BringAllToFront,
    ShowHelp, // has the platform's own key
    // Of the system's menu with the application's name.
    Services, // a submenu that the system fills
    Hide,
    HideOthers,
    ShowAll,
};

enum class KeyModifiers : std::uint8_t { Command, CommandShift, CommandOption };

struct MenuItemDescription {
    std::string title; // English, looked up when shown; & marks the letter that platforms with such letters underline
    std::string identifier;
    std::string key = {}; // one character, pressed with the modifiers; empty for none
    MenuCommand command = MenuCommand::None;
    KeyModifiers modifiers = KeyModifiers::Command;
};

struct MenuDescription {
    std::string title;
    std::string identifier;
    MenuRole role = MenuRole::Ordinary;
    std::vector<std::vector<MenuItemDescription>> groups; // none is empty; separators stand between them
};

// From left to right.
using MenuBarDescription = std::vector<MenuDescription>;

} // namespace platform::ui
