#include "platform/linux/ui/application/ApplicationInstance.h"

#include "platform/linux/ui/application/StartupNotification.h"
#include "platform/linux/ui/application/ToolkitTranslation.h"

#include <QMainWindow>
#include <utility>

namespace platform::ui {

namespace {

const QWidget* windowWithMenus()
{
    for (const auto* const widget : QApplication::topLevelWidgets()) {
        const auto* const window = qobject_cast<const QMainWindow*>(widget);
        if (window && window->isVisible() && window->menuWidget())
            return window;
    }
    return nullptr;
}

} // namespace

ApplicationInstance::ApplicationInstance(int& argc, char** argv) : QApplication(argc, argv)
{
    setApplicationName(QStringLiteral("Brevane"));
    setApplicationDisplayName(QStringLiteral("Brevane"));
    setOrganizationName(QStringLiteral("Zerkolin"));
    setDesktopFileName(QStringLiteral("com.zerkolin.brevane.application"));
    setQuitOnLastWindowClosed(false);
    setAttribute(Qt::AA_DontUseNativeMenuBar); // looking for a desktop's own costs the start a trip over the bus
    installToolkitTranslation(*this);
    connect(this, &QGuiApplication::lastWindowClosed, this, &ApplicationInstance::lastWindowDidClose);
}

void ApplicationInstance::terminateSoon()
{
    QMetaObject::invokeMethod(this, &ApplicationInstance::terminate, Qt::QueuedConnection);
}

void ApplicationInstance::terminate()
{
    if (_terminating)
        return;
    _terminating = true; // the delegate may show alerts, during which it can be asked for again
    const auto delegate = _delegate.lock();
    _terminating = !delegate || delegate->applicationShouldTerminate();
    if (_terminating)
        terminateAtOnce();
}

void ApplicationInstance::terminateAtOnce()
{
    if (std::exchange(_ended, true))
        return;
    _terminating = true;
    if (const auto delegate = _delegate.lock())
        delegate->applicationWillTerminate();
    Q_EMIT terminated();
}

bool ApplicationInstance::event(QEvent* event)
{
    // The session manager says so. The toolkit would close the windows first, which asks.
    if (event->type() == QEvent::Quit) {
        terminateAtOnce();
        return true;
    }
    return QApplication::event(event);
}

void ApplicationInstance::reopen(const QByteArray& startup)
{
    if (const auto delegate = _delegate.lock())
        delegate->applicationDidReopen(false); // nobody else brings a window forward
    // What waits for an answer must not lie hidden.
    if (auto* const modal = activeModalWidget()) {
        modal->raise();
        modal->activateWindow();
        bringForward(*modal, startup);
    } else if (const auto* const window = windowWithMenus()) {
        bringForward(*window, startup);
    }
}

void ApplicationInstance::show(const QByteArray& window)
{
    if (const auto delegate = _delegate.lock(); delegate && !window.isEmpty())
        delegate->applicationShouldShow(window.toStdString());
}

void ApplicationInstance::lastWindowDidClose()
{
    const auto delegate = _delegate.lock();
    if (delegate && delegate->applicationShouldTerminateAfterLastWindowClosed())
        terminateSoon();
}

} // namespace platform::ui
