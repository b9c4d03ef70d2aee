#include "platform/linux/ui/windows/WindowFit.h"

#include "platform/linux/ui/controls/ViewNative.h"

#include <algorithm>
#include <QCoreApplication>
#include <QEvent>
#include <QLayout>
#include <QMainWindow>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <utility>

namespace platform::ui {

namespace {

WindowFit* fitOf(QWidget* window)
{
    const QObjectList& children = window->children();
    const auto found = std::ranges::find_if(children, [](QObject* child) { return dynamic_cast<WindowFit*>(child); });
    return found != children.end() ? static_cast<WindowFit*>(*found) : nullptr;
}

// A widget without a parent is a window to the toolkit, even if it only waits for its place in one.
bool isDetachedView(const QWidget* window)
{
    return !window->isVisible() && viewForWidget(window);
}

QWidget* centreOf(QWidget* window)
{
    const auto* mainWindow = qobject_cast<QMainWindow*>(window);
    return mainWindow && mainWindow->centralWidget() ? mainWindow->centralWidget() : window;
}

// What is in the middle, scrolled or not.
QWidget* contentOf(QWidget* window)
{
    QWidget* centre = centreOf(window);
    const auto* area = qobject_cast<QScrollArea*>(centre);
    return area && area->widget() ? area->widget() : centre;
}

int preferredHeight(const QWidget* widget, int width)
{
    return widget->hasHeightForWidth() ? widget->heightForWidth(width) : widget->sizeHint().height();
}

int leastHeight(const QWidget* widget, int width)
{
    const QLayout* layout = widget->layout();
    return layout && layout->hasHeightForWidth() ? layout->minimumHeightForWidth(width)
                                                 : widget->minimumSizeHint().height();
}

} // namespace

WindowFit::WindowFit(QWidget* window) : QObject(window), _window(window)
{
    window->installEventFilter(this);
}

void WindowFit::contentWillChange(const QWidget* container)
{
    QWidget* window = container->window();
    if (isDetachedView(window))
        return;
    WindowFit* fit = fitOf(window);
    if (!fit)
        fit = new WindowFit(window);
    if (!fit->_exchanged)
        fit->beginExchange();
}

void WindowFit::contentChanged(QWidget* container)
{
    contentWillChange(container);
    QWidget* window = container->window();
    for (QWidget* widget = container; widget != window; widget = widget->parentWidget()) {
        if (widget->layout())
            widget->layout()->invalidate();
        widget->updateGeometry();
    }
    if (window->layout())
        window->layout()->invalidate();
}

void WindowFit::beginExchange()
{
    _exchanged = true;
    _focused = _window->focusWidget();
    _window->setUpdatesEnabled(false);
    QCoreApplication::postEvent(_window, new QEvent(QEvent::LayoutRequest));
}

void WindowFit::apply(QWidget* window)
{
    if (WindowFit* fit = fitOf(window))
        fit->fit();
}

bool WindowFit::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == _window && event->type() == QEvent::LayoutRequest)
        fit();
    return false;
}

void WindowFit::fit()
{
    const bool sizeIsSettled = _window->isVisible() || _window->testAttribute(Qt::WA_Resized);
    if (sizeIsSettled && _window->layout() && !_window->isMaximized() && !_window->isFullScreen())
        resizeWindow();
    if (std::exchange(_exchanged, false))
        endExchange();
}

// A view that was taken out and put back has the keyboard as before.
void WindowFit::endExchange()
{
    if (_focused && _focused->window() == _window && _window->focusWidget() != _focused)
        _focused->setFocus(Qt::OtherFocusReason);
    _window->setUpdatesEnabled(true);
}

QSize WindowFit::room(const QWidget& window)
{
    QSize frame = window.frameGeometry().size() - window.size();
    if (frame.height() <= 0) { // not known before it is on the screen
        const auto metric = [&window](QStyle::PixelMetric of) {
            return window.style()->pixelMetric(of, nullptr, &window);
        };
        const int border = metric(QStyle::PM_MdiSubWindowFrameWidth);
        frame = {2 * border, metric(QStyle::PM_TitleBarHeight) + border};
    }
    return window.screen()->availableGeometry().size() - frame;
}

void WindowFit::resizeWindow()
{
    QWidget* content = contentOf(_window);
    const QSize room = WindowFit::room(*_window);
    const QSize chrome = _window->sizeHint() - centreOf(_window)->sizeHint();
    const int width = std::min(std::max(_window->width(), _window->minimumSizeHint().width()), room.width());
    const int contentWidth = width - chrome.width();
    const int most = content->layout() ? content->layout()->totalMaximumSize().height() : QWIDGETSIZE_MAX;
    const int least = std::min(leastHeight(content, contentWidth), most);
    const int wanted = _exchanged ? preferredHeight(content, contentWidth) : _window->height() - chrome.height();
    const int height = std::min(std::clamp(wanted, least, most) + chrome.height(), room.height());

    // A window that shrinks needs its new least size first, one that grows gets it after.
    if (height < _window->height())
        _window->layout()->activate();
    _window->setMaximumHeight(QWIDGETSIZE_MAX);
    _window->resize(width, height);
    if (most < QWIDGETSIZE_MAX - chrome.height())
        _window->setMaximumHeight(most + chrome.height());
    _window->layout()->activate();
}

} // namespace platform::ui
