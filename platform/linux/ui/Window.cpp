#include "platform/ui/Window.h"

#include "platform/linux/ui/WindowNative.h"

#include <QCoreApplication>
#include <QScreen>

namespace platform::ui {

Window::Window(std::unique_ptr<Native> native) : _native(std::move(native)) { }

Window::~Window() = default;

std::string Window::identifier() const
{
    return _native->window->objectName().toStdString();
}

std::shared_ptr<View> Window::contentView() const
{
    return _native->contentView;
}

bool Window::isVisible() const
{
    return _native->window->isVisible();
}

void Window::setAutorecalculatesKeyViewLoop(bool recalculates)
{
    _native->window->setOrdersTabsByPosition(recalculates);
}

void Window::layoutIfNeeded()
{
    _native->contentView->layoutIfNeeded();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    _native->window->adjustSize();
}

void Window::center()
{
    auto& window = *_native->window;
    auto frame = window.frameGeometry();
    frame.moveCenter(window.screen()->availableGeometry().center());
    window.move(frame.topLeft());
}

void Window::makeKeyAndOrderFront()
{
    auto& window = *_native->window;
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

void Window::close()
{
    _native->window->close();
}

} // namespace platform::ui
