#include "platform/ui/Interface.h"

#include "platform/Localization.h"
#include "platform/macos/interface/InterfaceDescription.h"
#include "platform/macos/interface/Metrics.h"
#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/InterfaceBuilder.h"
#include "platform/macos/ui/MainMenu.h"
#include "platform/macos/ui/ViewNative.h"
#include "platform/macos/ui/WindowNative.h"

#include <cstdio>
#include <cstdlib>

namespace platform::ui {

struct Interface::Native {
    std::shared_ptr<Window> window;
    std::shared_ptr<View> view;
    NamedViews views;
    NamedMenuItems menuItems;
    // In no other view before they are put there.
    std::vector<std::shared_ptr<View>> detached;
};

namespace {

[[noreturn]] void fail(const char* what, std::string_view name)
{
    std::fprintf(stderr, "%s: %.*s\n", what, static_cast<int>(name.size()), name.data());
    std::abort();
}

// The view with the margin of a window around it.
void fillWindow(NSView* content, NSView* view)
{
    [content addSubview:view];
    NSDictionary* const views = NSDictionaryOfVariableBindings(view);
    NSDictionary* const metrics = @{@"margin" : @(macos::metrics::windowMargin)};
    for (NSString* const format in @[ @"H:|-margin-[view]-margin-|", @"V:|-margin-[view]-margin-|" ])
        [content addConstraints:[NSLayoutConstraint constraintsWithVisualFormat:format
                                                                        options:0
                                                                        metrics:metrics
                                                                          views:views]];
}

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
    window.identifier = foundation::string(description.identifier);
    window.title = foundation::string(localizedString(description.title));
    fillWindow(window.contentView, content->native().view);
    return std::make_shared<Window>(std::unique_ptr<Window::Native>(new Window::Native{window, content}));
}

} // namespace

std::unique_ptr<Interface> Interface::load(std::string_view name)
{
    const macos::InterfaceDescription* const description = macos::findInterfaceDescription(name);
    if (!description)
        fail("No interface of this name", name);
    auto native = std::make_unique<Native>();
    native->view = buildElement(description->root, native->views);
    for (const macos::Element& element : description->detached)
        native->detached.push_back(buildElement(element, native->views));
    if (*description->window.identifier)
        native->window = makeWindow(description->window, std::exchange(native->view, nullptr));
    if (description->hasMainMenu)
        native->menuItems = installMainMenu();
    return std::make_unique<Interface>(std::move(native));
}

Interface::Interface(std::unique_ptr<Native> native) : _native(std::move(native)) { }

Interface::~Interface() = default;

std::shared_ptr<Window> Interface::window() const
{
    return _native->window;
}

std::shared_ptr<View> Interface::view() const
{
    return _native->view;
}

std::shared_ptr<MenuItem> Interface::menuItem(std::string_view identifier) const
{
    const auto found = _native->menuItems.find(identifier);
    if (found == _native->menuItems.end())
        failMissingOutlet(identifier);
    return found->second;
}

std::vector<std::string> Interface::identifiers() const
{
    std::vector<std::string> names;
    if (_native->window)
        names.push_back(_native->window->identifier());
    for (const auto& [name, view] : _native->views)
        names.push_back(name);
    for (const auto& [name, item] : _native->menuItems)
        names.push_back(name);
    return names;
}

std::shared_ptr<View> Interface::find(std::string_view identifier) const
{
    const auto found = _native->views.find(identifier);
    return found == _native->views.end() ? nullptr : found->second;
}

void Interface::failMissingOutlet(std::string_view identifier) const
{
    fail("Missing outlet", identifier);
}

} // namespace platform::ui
