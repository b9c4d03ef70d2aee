#include "platform/macos/interface/InterfaceDescription.h"
#include "platform/macos/interface/MenuDescription.h"
#include "platform/PropertyListCoding.h"
#include "tests/macos-lists/InterfaceFile.h"
#include "tests/macos-lists/Sources.h"

#include <doctest/doctest.h>
#include <functional>
#include <map>
#include <set>

using namespace platform::macos;

namespace {

void visitItems(const std::function<void(const MenuItemDescription&)>& visitor)
{
    for (const auto& menu : mainMenuDescription())
        for (const auto& item : menu.items)
            visitor(item);
}

std::map<std::string, const MenuItemDescription*> namedItems()
{
    std::map<std::string, const MenuItemDescription*> named;
    visitItems([&](const MenuItemDescription& item) {
        if (*item.identifier)
            CHECK_MESSAGE(named.emplace(item.identifier, &item).second, item.identifier);
    });
    return named;
}

std::string keyText(const MenuItemDescription& item)
{
    if (!*item.key)
        return {};
    std::string key = item.key;
    for (char& letter : key)
        letter = static_cast<char>(letter >= 'a' && letter <= 'z' ? letter - 'a' + 'A' : letter);
    return (item.modifiers == CommandShift        ? "Ctrl+Shift+"
                : item.modifiers == CommandOption ? "Ctrl+Alt+"
                                                  : "Ctrl+")
        + key;
}

// What the platform's own actions are on Linux.
const std::map<std::string, std::string> ownActions{
    {"undoMenuItem", "undo:"},
    {"redoMenuItem", "redo:"},
    {"cutMenuItem", "cut:"},
    {"copyMenuItem", "copy:"},
    {"pasteMenuItem", "paste:"},
    {"selectAllMenuItem", "selectAll:"},
    {"minimiseMenuItem", "performMiniaturize:"},
    {"closeMenuItem", "performClose:"},
    {"bringAllToFrontMenuItem", "arrangeInFront:"},
    {"helpMenuItem", "showHelp:"},
};

const MenuItemDescription* itemFor(const std::string& identifier)
{
    const auto named = namedItems();
    if (const auto found = named.find(identifier); found != named.end())
        return found->second;
    const auto own = ownActions.find(identifier);
    const MenuItemDescription* found = nullptr;
    visitItems([&](const MenuItemDescription& item) {
        if (own != ownActions.end() && own->second == item.selector)
            found = &item;
    });
    return found;
}

} // namespace

TEST_CASE("Every menu item that the rooms ask for is in the menu bar")
{
    const auto named = namedItems();
    std::string text;
    for (const auto& path : Sources::filesBelow("shell", ".cpp"))
        text += Sources::read(path);
    const auto asked = Sources::matches(text, R"-(menuItem\("(\w+)"\))-");
    CHECK(asked.size() > 5);
    std::set<std::string> names;
    for (const auto& item : asked) {
        CHECK_MESSAGE(named.contains(item[0]), item[0]);
        names.insert(item[0]);
    }
}

TEST_CASE("Every menu item of Linux is in the menu bar, with the same title and key")
{
    const auto file = InterfaceFile::read("MainWindow");
    int actions = 0;
    for (const auto& [identifier, element] : file.elements) {
        if (element.kind != "action" || identifier == "separator")
            continue;
        INFO(identifier);
        const auto* const item = itemFor(identifier);
        REQUIRE(item);
        // The platform's convention names the application.
        CHECK((identifier == "quitMenuItem" || element.title == item->title));
        // Each platform has its own key for help.
        CHECK(element.key == (identifier == "helpMenuItem" ? "F1" : keyText(*item)));
        ++actions;
    }
    CHECK(actions > 15);
}

TEST_CASE("Every named item of the menu bar is one of Linux too")
{
    const auto file = InterfaceFile::read("MainWindow");
    for (const auto& [identifier, item] : namedItems())
        CHECK_MESSAGE(file.elements.contains(identifier), identifier);
}

TEST_CASE("An item is a separator, has an outlet, an action of the platform or a submenu, and only one of them")
{
    visitItems([](const MenuItemDescription& item) {
        const int ways = static_cast<int>(*item.identifier != '\0') + static_cast<int>(*item.selector != '\0')
            + static_cast<int>(item.submenu != MenuRole::Ordinary);
        CHECK_MESSAGE(ways == (item.isSeparator() ? 0 : 1), item.title);
    });
}

TEST_CASE("No key stands twice, and no separator at an end or beside another")
{
    std::set<std::string> keys;
    for (const auto& menu : mainMenuDescription()) {
        INFO(menu.title);
        REQUIRE(!menu.items.empty());
        CHECK(!menu.items.front().isSeparator());
        CHECK(!menu.items.back().isSeparator());
        for (std::size_t i = 0; i < menu.items.size(); ++i) {
            CHECK((i == 0 || !menu.items[i].isSeparator() || !menu.items[i - 1].isSeparator()));
            const auto key = keyText(menu.items[i]);
            CHECK_MESSAGE((key.empty() || keys.insert(key).second), key);
        }
    }
}

TEST_CASE("The application's menu comes first and help last, and each role has one menu")
{
    const auto& menus = mainMenuDescription();
    CHECK(menus.front().role == MenuRole::Application);
    CHECK(menus.back().role == MenuRole::Help);
    std::multiset<MenuRole> roles;
    for (const auto& menu : menus)
        roles.insert(menu.role);
    CHECK(roles.count(MenuRole::Window) == 1);
    CHECK(roles.count(MenuRole::Application) == 1);
    CHECK(roles.count(MenuRole::Help) == 1);
}

TEST_CASE("Where there are no snapshots, an item follows theirs that can take their key")
{
    for (const auto& menu : mainMenuDescription()) {
        for (std::size_t i = 0; i < menu.items.size(); ++i) {
            if (std::string_view(menu.items[i].identifier) != "localSnapshotsMenuItem")
                continue;
            REQUIRE(i + 1 < menu.items.size());
            CHECK(*menu.items[i + 1].identifier);
            CHECK(std::string_view(menu.items[i].key) == "1");
        }
    }
}

TEST_CASE("Every text of the windows and menus is in the string tables")
{
    std::set<std::string> texts;
    const auto add = [&](const char* text) {
        if (*text)
            texts.insert(text);
    };
    for (const auto& menu : mainMenuDescription())
        add(menu.title);
    visitItems([&](const MenuItemDescription& item) { add(item.title); });
    const std::function<void(const Element&)> addElement = [&](const Element& element) {
        add(element.title);
        add(element.accessibleName);
        for (const char* const item : element.items)
            add(item);
        for (const Element& child : element.children)
            addElement(child);
    };
    for (const auto& description : interfaceDescriptions()) {
        add(description.window.title);
        addElement(description.root);
        for (const Element& element : description.detached)
            addElement(element);
    }
    CHECK(texts.size() > 50);

    const auto table = platform::propertyListWithOldStyleText(Sources::read("resources/en.lproj/Localizable.strings"));
    REQUIRE(table);
    for (const auto& text : texts)
        CHECK_MESSAGE(table->dictionary()->contains(text), text);
}
