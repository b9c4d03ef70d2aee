#include "platform/ui/Interface.h"

#include "platform/Localization.h"
#include "platform/macos/interface/InterfaceDescription.h"
#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/InterfaceBuilder.h"
#include "platform/macos/ui/MenuBar.h"
#include "platform/macos/ui/ViewNative.h"
#include "platform/macos/ui/WindowNative.h"

#include <utility>

namespace platform::ui {

namespace {

std::shared_ptr<Window> makeWindow(const macos::WindowDescription& description, const std::shared_ptr<View>& content)
{
    NSWindowStyleMask style = NSWindowStyleMaskTitled | NSWindowStyleMaskClosable | NSWindowStyleMaskMiniaturizable;
    if (description.isResizable)
        style |= NSWindowStyleMaskResizable;
    NSWindow* const window = [[NSWindow alloc] initWithContentRect:NSMakeRect(0, 0, 100, 100)
                                                         styleMask:style
                                                           backing:NSBackingStoreBuffered
                                                             defer:YES];
    window.releasedWhenClosed = NO;
    window.restorable = NO; // each start shows the main window alone
    window.identifier = foundation::string(description.identifier);
    window.title = foundation::string(localizedString(description.title));
    [window.contentView addSubview:content->native().view];
    constrain(window.contentView, @[ content->native().view ], macos::constraintsOfWindow());
    return std::make_shared<Window>(std::unique_ptr<Window::Native>(new Window::Native{window, content}));
}

// The application ends with the window that has its menus, whatever else is open.
void closeOthersWith(NSWindow* window)
{
    __weak NSWindow* const closing = window;
    [NSNotificationCenter.defaultCenter addObserverForName:NSWindowWillCloseNotification
                                                    object:window
                                                     queue:nil
                                                usingBlock:^(NSNotification*) {
                                                    for (NSWindow* const other in [NSApp.windows copy])
                                                        if (other != closing && (other.visible || other.miniaturized)
                                                            && (other.styleMask & NSWindowStyleMaskClosable))
                                                            [other close];
                                                }];
}

} // namespace

std::unique_ptr<Interface> Interface::load(std::string_view name, const MenuBarDescription& menus)
{
    const macos::InterfaceDescription* const description = macos::findInterfaceDescription(name);
    if (!description)
        fail("No interface of this name", name);
    Contents contents;
    contents.view = buildElement(description->root, contents.views);
    for (const macos::Element& element : description->detached)
        contents.detached.push_back(buildElement(element, contents.views));
    if (*description->window.identifier)
        contents.window = makeWindow(description->window, std::exchange(contents.view, nullptr));
    if (!menus.empty()) {
        contents.menuItems = installMenuBar(menus);
        closeOthersWith(contents.window->native().window);
    }
    return std::make_unique<Interface>(std::move(contents));
}

} // namespace platform::ui
