#include "platform/macos/interface/InterfaceDescription.h"
#include "shell/menus/MainMenu.h"
#include "tests/localization/Tables.h"
#include "tests/macos/Elements.h"

#include <doctest/doctest.h>
#include <set>
#include <string>

using platform::macos::Element;
using platform::ui::MenuConvention;

namespace {

void checkKeys(const std::set<std::string>& texts)
{
    const auto table = tables::read("en");
    for (const auto& text : texts)
        CHECK_MESSAGE(table.contains(text), text);
}

} // namespace

TEST_CASE("every text of the menu bar has a key, by either convention")
{
    std::set<std::string> texts;
    for (const auto convention : {MenuConvention::ApplicationMenu, MenuConvention::WindowMenus}) {
        for (const auto& menu : mainMenu(convention)) {
            texts.insert(menu.title);
            for (const auto& group : menu.groups) {
                for (const auto& item : group)
                    texts.insert(item.title);
            }
        }
    }
    CHECK(texts.size() > 25);
    checkKeys(texts);
}

TEST_CASE("every text of the macOS edition's windows has a key")
{
    std::set<std::string> texts;
    for (const auto& description : platform::macos::interfaceDescriptions()) {
        texts.insert(description.window.title);
        visitAll(description, [&](const Element& element) {
            texts.insert({element.title, element.accessibleName});
            texts.insert(element.items.begin(), element.items.end());
        });
    }
    texts.erase("");
    CHECK(texts.size() > 35);
    checkKeys(texts);
}
