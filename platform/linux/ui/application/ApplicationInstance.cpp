#include "platform/linux/ui/application/ApplicationInstance.h"

#include "platform/linux/ui/application/ToolkitTranslation.h"

#include <QWidget>

namespace platform::ui {

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
        Q_EMIT terminated();
}

void ApplicationInstance::reopen()
{
    if (const auto delegate = _delegate.lock())
        delegate->applicationDidReopen();
    // What waits for an answer must not lie hidden.
    if (auto* const modal = activeModalWidget()) {
        modal->raise();
        modal->activateWindow();
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
