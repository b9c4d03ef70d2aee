#include "platform/macos/ui/MenuBar.h"

#include "platform/Localization.h"
#include "platform/macos/interface/PlainTitle.h"
#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/MenuItemNative.h"

namespace platform::ui {

namespace {

NSString* text(const std::string& key)
{
    return foundation::string(macos::plainTitle(localizedString(key)));
}

NSEventModifierFlags nativeModifiers(KeyModifiers modifiers)
{
    switch (modifiers) {
    case KeyModifiers::CommandShift:
        return NSEventModifierFlagCommand | NSEventModifierFlagShift;
    case KeyModifiers::CommandOption:
        return NSEventModifierFlagCommand | NSEventModifierFlagOption;
    case KeyModifiers::Command:
        break;
    }
    return NSEventModifierFlagCommand;
}

// AppKit's own action; null for none.
SEL selectorOf(MenuCommand command)
{
    switch (command) {
    case MenuCommand::Undo:
        return @selector(undo:);
    case MenuCommand::Redo:
        return @selector(redo:);
    case MenuCommand::Cut:
        return @selector(cut:);
    case MenuCommand::Copy:
        return @selector(copy:);
    case MenuCommand::Paste:
        return @selector(paste:);
    case MenuCommand::SelectAll:
        return @selector(selectAll:);
    case MenuCommand::Find:
    case MenuCommand::FindNext:
    case MenuCommand::FindPrevious:
        return @selector(performFindPanelAction:);
    case MenuCommand::Minimize:
        return @selector(performMiniaturize:);
    case MenuCommand::Zoom:
        return @selector(performZoom:);
    case MenuCommand::Close:
        return @selector(performClose:);
    case MenuCommand::BringAllToFront:
        return @selector(arrangeInFront:);
    case MenuCommand::ShowHelp:
        return @selector(showHelp:);
    case MenuCommand::Hide:
        return @selector(hide:);
    case MenuCommand::HideOthers:
        return @selector(hideOtherApplications:);
    case MenuCommand::ShowAll:
        return @selector(unhideAllApplications:);
    case MenuCommand::None:
    case MenuCommand::Services:
        break;
    }
    return nullptr;
}

// Which of the actions of finding; 0 for none.
NSInteger findTagOf(MenuCommand command)
{
    switch (command) {
    case MenuCommand::Find:
        return NSFindPanelActionShowFindPanel;
    case MenuCommand::FindNext:
        return NSFindPanelActionNext;
    case MenuCommand::FindPrevious:
        return NSFindPanelActionPrevious;
    default:
        return 0;
    }
}

NSMenuItem* newItem(const MenuItemDescription& description)
{
    const bool isHelp = description.command == MenuCommand::ShowHelp;
    NSMenuItem* const item = [[NSMenuItem alloc] initWithTitle:text(description.title)
                                                        action:selectorOf(description.command)
                                                 keyEquivalent:isHelp ? @"?" : foundation::string(description.key)];
    item.keyEquivalentModifierMask = nativeModifiers(description.modifiers);
    item.tag = findTagOf(description.command);
    if (description.command == MenuCommand::Services) {
        item.submenu = [[NSMenu alloc] initWithTitle:item.title];
        NSApp.servicesMenu = item.submenu;
    } else {
        targetOf(item, foundation::string(description.identifier));
    }
    return item;
}

NSMenu* newMenu(const MenuDescription& description, NamedMenuItems& items)
{
    NSMenu* const menu = [[NSMenu alloc] initWithTitle:text(description.title)];
    for (const auto& group : description.groups) {
        if (menu.numberOfItems > 0)
            [menu addItem:NSMenuItem.separatorItem];
        for (const MenuItemDescription& itemDescription : group) {
            NSMenuItem* const item = newItem(itemDescription);
            [menu addItem:item];
            auto native = std::unique_ptr<MenuItem::Native>(new MenuItem::Native{item});
            items.emplace(itemDescription.identifier, std::make_shared<MenuItem>(std::move(native)));
        }
    }
    return menu;
}

void takeRole(NSMenu* menu, MenuRole role)
{
    if (role == MenuRole::Window)
        NSApp.windowsMenu = menu;
    else if (role == MenuRole::Help)
        NSApp.helpMenu = menu;
}

} // namespace

MenuConvention menuConvention()
{
    return MenuConvention::ApplicationMenu;
}

NamedMenuItems installMenuBar(const MenuBarDescription& menus)
{
    NamedMenuItems items;
    NSMenu* const bar = [[NSMenu alloc] initWithTitle:@""];
    for (const MenuDescription& description : menus) {
        NSMenu* const menu = newMenu(description, items);
        [bar addItemWithTitle:menu.title action:nil keyEquivalent:@""].submenu = menu;
        takeRole(menu, description.role);
    }
    NSApp.mainMenu = bar;
    return items;
}

} // namespace platform::ui
