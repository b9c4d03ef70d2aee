#include "shell/menus/MainMenu.h"

#include <optional>
#include <utility>

using namespace platform::ui;

namespace {

using enum KeyModifiers;
using enum MenuConvention;

struct Item {
    MenuItemDescription item;
    std::optional<MenuConvention> only = {}; // nullopt: every convention has it
};

using Groups = std::vector<std::vector<Item>>;

struct Menu {
    const char* title;
    const char* identifier;
    MenuRole role;
    Groups groups;
};

const Item closeItem{{.title = "&Close", .identifier = "closeMenuItem", .key = "w", .command = MenuCommand::Close}};

Item onlyFor(MenuConvention convention, Item item)
{
    item.only = convention;
    return item;
}

Groups applicationGroups()
{
    return {
        {{{.title = "&About Brevane", .identifier = "aboutMenuItem"}}},
        {{{.title = "&Preferences…", .identifier = "preferencesMenuItem", .key = ","}},
         {{.title = "&Backup Program…", .identifier = "backupProgramMenuItem"}},
         {{.title = "&Check for Updates…", .identifier = "checkUpdatesMenuItem"}}},
        {{{.title = "Services", .identifier = "servicesMenuItem", .command = MenuCommand::Services}, ApplicationMenu}},
        {{{.title = "Hide Brevane", .identifier = "hideMenuItem", .key = "h", .command = MenuCommand::Hide},
          ApplicationMenu},
         {{.title = "Hide Others",
           .identifier = "hideOthersMenuItem",
           .key = "h",
           .command = MenuCommand::HideOthers,
           .modifiers = CommandOption},
          ApplicationMenu},
         {{.title = "Show All", .identifier = "showAllMenuItem", .command = MenuCommand::ShowAll}, ApplicationMenu}},
        {{{.title = "&Uninstall Brevane…", .identifier = "uninstallMenuItem"}}},
        {{{.title = "Quit Brevane", .identifier = "quitMenuItem", .key = "q"}, ApplicationMenu}},
    };
}

Groups fileGroups()
{
    return {
        {{{.title = "&Show Current Settings", .identifier = "showCurrentSettingsMenuItem"}}},
        {onlyFor(ApplicationMenu, closeItem)},
        {{{.title = "&Quit", .identifier = "quitMenuItem", .key = "q"}, WindowMenus}},
    };
}

Groups editGroups()
{
    return {
        {{{.title = "&Undo", .identifier = "undoMenuItem", .key = "z", .command = MenuCommand::Undo}},
         {{.title = "&Redo",
           .identifier = "redoMenuItem",
           .key = "z",
           .command = MenuCommand::Redo,
           .modifiers = CommandShift}}},
        {{{.title = "Cu&t", .identifier = "cutMenuItem", .key = "x", .command = MenuCommand::Cut}},
         {{.title = "&Copy", .identifier = "copyMenuItem", .key = "c", .command = MenuCommand::Copy}},
         {{.title = "&Paste", .identifier = "pasteMenuItem", .key = "v", .command = MenuCommand::Paste}}},
        {{{.title = "Select &All", .identifier = "selectAllMenuItem", .key = "a", .command = MenuCommand::SelectAll}}},
        {{{.title = "Find…", .identifier = "findMenuItem", .key = "f", .command = MenuCommand::Find}, ApplicationMenu},
         {{.title = "Find Next", .identifier = "findNextMenuItem", .key = "g", .command = MenuCommand::FindNext},
          ApplicationMenu},
         {{.title = "Find Previous",
           .identifier = "findPreviousMenuItem",
           .key = "g",
           .command = MenuCommand::FindPrevious,
           .modifiers = CommandShift},
          ApplicationMenu}},
    };
}

Groups windowGroups()
{
    return {
        {{{.title = "Mi&nimize", .identifier = "minimiseMenuItem", .key = "m", .command = MenuCommand::Minimize}},
         {{.title = "Zoom", .identifier = "zoomMenuItem", .command = MenuCommand::Zoom}, ApplicationMenu},
         onlyFor(WindowMenus, closeItem)},
        {{{.title = "&Main Window", .identifier = "mainWindowMenuItem", .key = "0"}},
         {{.title = "&Local Snapshots", .identifier = "localSnapshotsMenuItem", .key = "1"}},
         {{.title = "C&onsole", .identifier = "consoleMenuItem", .key = "2"}},
         {{.title = "&Activity", .identifier = "activityMenuItem", .key = "3"}}},
        {{{.title = "&Bring All to Front",
           .identifier = "bringAllToFrontMenuItem",
           .command = MenuCommand::BringAllToFront}}},
    };
}

Groups helpGroups()
{
    return {
        {{{.title = "Brevane &Help", .identifier = "helpMenuItem", .command = MenuCommand::ShowHelp}}},
        {{{.title = "&Web Site", .identifier = "openWebSiteMenuItem"}},
         {{.title = "&Ask for Support", .identifier = "contactByMailMenuItem"}}},
    };
}

MenuDescription forConvention(MenuConvention convention, const Menu& menu)
{
    MenuDescription described{.title = menu.title, .identifier = menu.identifier, .role = menu.role, .groups = {}};
    for (const auto& group : menu.groups) {
        std::vector<MenuItemDescription> items;
        for (const auto& [item, only] : group) {
            if (only.value_or(convention) == convention)
                items.push_back(item);
        }
        if (!items.empty())
            described.groups.push_back(std::move(items));
    }
    return described;
}

} // namespace

MenuBarDescription mainMenu(MenuConvention convention)
{
    return {
        forConvention(convention, {"B&revane", "applicationMenu", MenuRole::Application, applicationGroups()}),
        forConvention(convention, {"&File", "fileMenu", MenuRole::Ordinary, fileGroups()}),
        forConvention(convention, {"&Edit", "editMenu", MenuRole::Ordinary, editGroups()}),
        forConvention(convention, {"Win&dow", "windowMenu", MenuRole::Window, windowGroups()}),
        forConvention(convention, {"&Help", "helpMenu", MenuRole::Help, helpGroups()}),
    };
}
