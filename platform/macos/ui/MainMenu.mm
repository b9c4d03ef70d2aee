#include "platform/macos/ui/MainMenu.h"

#include "platform/Localization.h"
#include "platform/macos/interface/MenuDescription.h"
#include "platform/macos/interface/PlainTitle.h"
#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/MenuItemNative.h"

namespace platform::ui {

namespace {

static_assert(NSFindPanelActionShowFindPanel == 1); // the description's tag

NSString* text(const char* key)
{
    return foundation::string(macos::plainTitle(localizedString(key)));
}

using macos::MenuDescription;
using macos::MenuItemDescription;
using macos::MenuRole;

NSEventModifierFlags nativeModifiers(macos::ModifierKeys modifiers)
{
    switch (modifiers) {
    case macos::CommandShift:
        return NSEventModifierFlagCommand | NSEventModifierFlagShift;
    case macos::CommandOption:
        return NSEventModifierFlagCommand | NSEventModifierFlagOption;
    case macos::Command:
        break;
    }
    return NSEventModifierFlagCommand;
}

NSMenuItem* newItem(const MenuItemDescription& description)
{
    if (description.isSeparator())
        return NSMenuItem.separatorItem;
    NSMenuItem* const item =
        [[NSMenuItem alloc] initWithTitle:text(description.title)
                                   action:*description.selector ? sel_registerName(description.selector) : nil
                            keyEquivalent:foundation::string(description.key)];
    item.keyEquivalentModifierMask = nativeModifiers(description.modifiers);
    item.tag = description.tag;
    if (*description.identifier)
        targetOf(item, foundation::string(description.identifier));
    if (description.submenu == MenuRole::Services) {
        item.submenu = [[NSMenu alloc] initWithTitle:item.title];
        NSApp.servicesMenu = item.submenu;
    }
    return item;
}

void takeRole(NSMenu* menu, MenuRole role)
{
    if (role == MenuRole::Window)
        NSApp.windowsMenu = menu;
    else if (role == MenuRole::Help)
        NSApp.helpMenu = menu;
}

} // namespace

NamedMenuItems installMainMenu()
{
    NamedMenuItems items;
    NSMenu* const bar = [[NSMenu alloc] initWithTitle:@""];
    for (const MenuDescription& description : macos::mainMenuDescription()) {
        NSMenu* const menu = [[NSMenu alloc] initWithTitle:text(description.title)];
        for (const MenuItemDescription& itemDescription : description.items) {
            NSMenuItem* const item = newItem(itemDescription);
            [menu addItem:item];
            if (*itemDescription.identifier)
                items.emplace(
                    itemDescription.identifier,
                    std::make_shared<MenuItem>(std::unique_ptr<MenuItem::Native>(new MenuItem::Native{item})));
        }
        [bar addItemWithTitle:menu.title action:nil keyEquivalent:@""].submenu = menu;
        takeRole(menu, description.role);
    }
    NSApp.mainMenu = bar;
    return items;
}

} // namespace platform::ui
