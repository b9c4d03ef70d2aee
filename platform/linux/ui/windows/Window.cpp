#include "platform/ui/Window.h"

#include "platform/linux/ui/windows/WindowFit.h"
#include "platform/linux/ui/windows/WindowNative.h"

#include <QAbstractSpinBox>
#include <QScreen>
#include <utility>

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

std::string Window::title() const
{
    return _native->window->windowTitle().toStdString();
}

void Window::setTitle(const std::string& title)
{
    _native->window->setWindowTitle(QString::fromStdString(title));
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
    auto& window = *_native->window;
    _native->contentView->layoutIfNeeded();
    if (!window.testAttribute(Qt::WA_Resized))
        window.adjustSize();
    window.fitToScreen();
    WindowFit::apply(&window);
}

void Window::center()
{
    auto& window = *_native->window;
    auto frame = window.frameGeometry();
    frame.moveCenter(window.screen()->availableGeometry().center());
    window.move(frame.topLeft());
}

void Window::setFrameAutosaveName(const std::string& name)
{
    _native->window->setFrameAutosaveName(name);
}

void Window::setUndo(std::function<void()> undo)
{
    _native->window->setUndo(std::move(undo));
}

void Window::endEditing()
{
    if (auto* const entry = qobject_cast<QAbstractSpinBox*>(_native->window->focusWidget()))
        entry->interpretText();
}

void Window::makeKeyAndOrderFront()
{
    auto& window = *_native->window;
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    if (!window.isVisible())
        window.fitToScreen(); // also where it was before
    window.show();
    window.raise();
    window.activateWindow();
}

void Window::close()
{
    _native->window->close();
}

void Window::setCloseHandler(std::function<void()> handler)
{
    _native->window->setCloseHandler(std::move(handler));
}

} // namespace platform::ui
