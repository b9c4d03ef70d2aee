#include "shell/menus/MainMenu.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <functional>
#include <set>
#include <string>
#include <vector>

using namespace platform::ui;

namespace {

constexpr MenuConvention conventions[] = {MenuConvention::ApplicationMenu, MenuConvention::WindowMenus};

void visitItems(MenuConvention convention, const std::function<void(const MenuItemDescription&)>& visitor)
{
    for (const auto& menu : mainMenu(convention)) {
        for (const auto& group : menu.groups) {
            for (const auto& item : group)
                visitor(item);
        }
    }
}

// "identifier key", a line between groups, of one menu.
std::vector<std::string> linesOf(const MenuDescription& menu)
{
    std::vector<std::string> lines;
    for (const auto& group : menu.groups) {
        if (!lines.empty())
            lines.emplace_back("-");
        for (const auto& item : group)
            lines.push_back(item.identifier + (item.key.empty() ? "" : " " + item.key));
    }
    return lines;
}

using Lines = std::vector<std::string>;

} // namespace

TEST_CASE("the menu bar of a window has what concerns the application in its first menus")
{
    const auto menus = mainMenu(MenuConvention::WindowMenus);
    REQUIRE(menus.size() == 5);
    CHECK(menus[0].title == "B&revane");
    CHECK(linesOf(menus[0])
          == Lines{"aboutMenuItem", "-", "preferencesMenuItem ,", "backupProgramMenuItem", "checkUpdatesMenuItem", "-",
                   "uninstallMenuItem"});
    CHECK(menus[1].title == "&File");
    CHECK(linesOf(menus[1]) == Lines{"showCurrentSettingsMenuItem", "-", "quitMenuItem q"});
    CHECK(menus[2].title == "&Edit");
    CHECK(linesOf(menus[2])
          == Lines{"undoMenuItem z", "redoMenuItem z", "-", "cutMenuItem x", "copyMenuItem c", "pasteMenuItem v", "-",
                   "selectAllMenuItem a"});
    CHECK(menus[3].title == "Win&dow");
    CHECK(linesOf(menus[3])
          == Lines{"minimiseMenuItem m", "closeMenuItem w", "-", "mainWindowMenuItem 0", "localSnapshotsMenuItem 1",
                   "consoleMenuItem 2", "activityMenuItem 3", "-", "bringAllToFrontMenuItem"});
    CHECK(menus[4].title == "&Help");
    CHECK(linesOf(menus[4]) == Lines{"helpMenuItem", "-", "openWebSiteMenuItem", "contactByMailMenuItem"});
}

TEST_CASE("where the system has an application menu, that menu has Services, Hide and Quit too")
{
    const auto menus = mainMenu(MenuConvention::ApplicationMenu);
    REQUIRE(menus.size() == 5);
    CHECK(linesOf(menus[0])
          == Lines{"aboutMenuItem", "-", "preferencesMenuItem ,", "backupProgramMenuItem", "checkUpdatesMenuItem", "-",
                   "servicesMenuItem", "-", "hideMenuItem h", "hideOthersMenuItem h", "showAllMenuItem", "-",
                   "uninstallMenuItem", "-", "quitMenuItem q"});
    CHECK(linesOf(menus[1]) == Lines{"showCurrentSettingsMenuItem", "-", "closeMenuItem w"});
    CHECK(linesOf(menus[2])
          == Lines{"undoMenuItem z", "redoMenuItem z", "-", "cutMenuItem x", "copyMenuItem c", "pasteMenuItem v", "-",
                   "selectAllMenuItem a", "-", "findMenuItem f", "findNextMenuItem g", "findPreviousMenuItem g"});
    CHECK(linesOf(menus[3])
          == Lines{"minimiseMenuItem m", "zoomMenuItem", "-", "mainWindowMenuItem 0", "localSnapshotsMenuItem 1",
                   "consoleMenuItem 2", "activityMenuItem 3", "-", "bringAllToFrontMenuItem"});
    CHECK(linesOf(menus[4]) == Lines{"helpMenuItem", "-", "openWebSiteMenuItem", "contactByMailMenuItem"});
}

TEST_CASE("every menu and item has its words, with the letter that chooses it, and the editing ones their commands")
{
    const auto wordsOf = [](MenuConvention convention) {
        Lines words;
        for (const auto& menu : mainMenu(convention))
            words.push_back(menu.identifier + ": " + menu.title);
        visitItems(convention, [&](const MenuItemDescription& item) { words.push_back(item.title); });
        return words;
    };
    CHECK(wordsOf(MenuConvention::WindowMenus)
          == Lines{"applicationMenu: B&revane",
                   "fileMenu: &File",
                   "editMenu: &Edit",
                   "windowMenu: Win&dow",
                   "helpMenu: &Help",
                   "&About Brevane",
                   "&Preferences…",
                   "&Backup Program…",
                   "&Check for Updates…",
                   "&Uninstall Brevane…",
                   "&Show Current Settings",
                   "&Quit",
                   "&Undo",
                   "&Redo",
                   "Cu&t",
                   "&Copy",
                   "&Paste",
                   "Select &All",
                   "Mi&nimize",
                   "&Close",
                   "&Main Window",
                   "&Local Snapshots",
                   "C&onsole",
                   "&Activity",
                   "&Bring All to Front",
                   "Brevane &Help",
                   "&Web Site",
                   "&Ask for Support"});
    Lines alone; // what only the application menu's convention has
    visitItems(MenuConvention::ApplicationMenu, [&](const MenuItemDescription& item) {
        const auto shared = wordsOf(MenuConvention::WindowMenus);
        if (std::ranges::find(shared, item.title) == shared.end())
            alone.push_back(item.title);
    });
    CHECK(alone
          == Lines{"Services", "Hide Brevane", "Hide Others", "Show All", "Quit Brevane", "Find…", "Find Next",
                   "Find Previous", "Zoom"});
}

TEST_CASE("the items that the system serves have their commands, and three their second modifier")
{
    Lines commands;
    visitItems(MenuConvention::ApplicationMenu, [&](const MenuItemDescription& item) {
        if (item.command != MenuCommand::None)
            commands.push_back(item.identifier + " " + std::to_string(static_cast<int>(item.command)));
        const auto modifiers = item.identifier == "redoMenuItem" || item.identifier == "findPreviousMenuItem"
            ? KeyModifiers::CommandShift
            : item.identifier == "hideOthersMenuItem" ? KeyModifiers::CommandOption
                                                      : KeyModifiers::Command;
        INFO(item.identifier);
        CHECK(item.modifiers == modifiers);
    });
    const auto line = [](const char* identifier, MenuCommand command) {
        return std::string(identifier) + " " + std::to_string(static_cast<int>(command));
    };
    CHECK(commands
          == Lines{line("servicesMenuItem", MenuCommand::Services), line("hideMenuItem", MenuCommand::Hide),
                   line("hideOthersMenuItem", MenuCommand::HideOthers), line("showAllMenuItem", MenuCommand::ShowAll),
                   line("closeMenuItem", MenuCommand::Close), line("undoMenuItem", MenuCommand::Undo),
                   line("redoMenuItem", MenuCommand::Redo), line("cutMenuItem", MenuCommand::Cut),
                   line("copyMenuItem", MenuCommand::Copy), line("pasteMenuItem", MenuCommand::Paste),
                   line("selectAllMenuItem", MenuCommand::SelectAll), line("findMenuItem", MenuCommand::Find),
                   line("findNextMenuItem", MenuCommand::FindNext),
                   line("findPreviousMenuItem", MenuCommand::FindPrevious),
                   line("minimiseMenuItem", MenuCommand::Minimize), line("zoomMenuItem", MenuCommand::Zoom),
                   line("bringAllToFrontMenuItem", MenuCommand::BringAllToFront),
                   line("helpMenuItem", MenuCommand::ShowHelp)});
}

TEST_CASE("an item that both conventions have is the same in both, but for the name of Quit")
{
    int same = 0;
    visitItems(MenuConvention::WindowMenus, [&](const MenuItemDescription& item) {
        INFO(item.identifier);
        int found = 0;
        visitItems(MenuConvention::ApplicationMenu, [&](const MenuItemDescription& other) {
            if (other.identifier != item.identifier)
                return;
            ++found;
            CHECK(other.key == item.key);
            CHECK(other.modifiers == item.modifiers);
            CHECK(other.command == item.command);
            CHECK((other.title == item.title || item.identifier == "quitMenuItem"));
        });
        CHECK(found == 1);
        ++same;
    });
    CHECK(same == 23);
}

TEST_CASE("no key, identifier or command stands twice")
{
    for (const auto convention : conventions) {
        std::set<std::string> identifiers;
        std::set<std::pair<std::string, KeyModifiers>> keys;
        std::set<MenuCommand> commands;
        visitItems(convention, [&](const MenuItemDescription& item) {
            INFO(item.identifier);
            CHECK(!item.title.empty());
            CHECK(identifiers.insert(item.identifier).second);
            CHECK((item.key.empty() || keys.emplace(item.key, item.modifiers).second));
            CHECK((item.command == MenuCommand::None || commands.insert(item.command).second));
        });
    }
}

TEST_CASE("the application's menu comes first and help last, each role has one menu, and no group is empty")
{
    for (const auto convention : conventions) {
        const auto menus = mainMenu(convention);
        CHECK(menus.front().role == MenuRole::Application);
        CHECK(menus.back().role == MenuRole::Help);
        std::multiset<MenuRole> roles;
        std::set<std::string> identifiers;
        for (const auto& menu : menus) {
            roles.insert(menu.role);
            CHECK(identifiers.insert(menu.identifier).second);
            CHECK(!menu.groups.empty());
            for (const auto& group : menu.groups)
                CHECK(!group.empty());
        }
        CHECK(roles.count(MenuRole::Window) == 1);
        CHECK(roles.count(MenuRole::Application) == 1);
        CHECK(roles.count(MenuRole::Help) == 1);
    }
}
