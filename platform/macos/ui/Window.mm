#include "platform/ui/Window.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/WindowNative.h"

namespace platform::ui {

Window::Window(std::unique_ptr<Native> native) : _native(std::move(native)) { }

Window::~Window() = default;

std::string Window::identifier() const
{
    return foundation::string(_native->window.identifier);
}

std::shared_ptr<View> Window::contentView() const
{
    return _native->contentView;
}

bool Window::isVisible() const
{
    return _native->window.visible;
}

void Window::setAutorecalculatesKeyViewLoop(bool recalculates)
{
    _native->window.autorecalculatesKeyViewLoop = recalculates;
}

void Window::layoutIfNeeded()
{
    [_native->window layoutIfNeeded];
}

void Window::center()
{
    [_native->window center];
}

void Window::setFrameAutosaveName(const std::string& name)
{
    [_native->window setFrameAutosaveName:foundation::string(name)];
}

void Window::makeKeyAndOrderFront()
{
    [_native->window makeKeyAndOrderFront:nil];
}

void Window::close()
{
    [_native->window close];
}

} // namespace platform::ui
