#include "platform/ui/Application.h"

#include "platform/linux/system/queues/MainQueue.h"
#include "platform/linux/ui/application/AboutPanel.h"
#include "platform/linux/ui/application/ApplicationInstance.h"
#include "platform/linux/ui/application/FirstInstance.h"
#include "platform/linux/ui/application/FontPreparation.h"
#include "platform/linux/ui/application/StartupNotification.h"
#include "platform/linux/ui/application/TerminationSignals.h"

#include <QSocketNotifier>

namespace platform::ui {

namespace {

constexpr const char* showArgument = "--show";

// Which window the arguments name.
QByteArray windowInArguments()
{
    const auto arguments = QCoreApplication::arguments();
    const auto at = arguments.indexOf(QLatin1String(showArgument));
    return at < 0 ? QByteArray() : arguments.value(at + 1).toUtf8();
}

} // namespace

int applicationMain(int argc, char** argv, const std::function<std::shared_ptr<ApplicationDelegate>()>& makeDelegate)
{
    const FontPreparation fonts;
    const auto startup = startupIdentifier();
    ApplicationInstance application(argc, argv);
    const auto window = windowInArguments();
    FirstInstance instance(window, startup);
    if (!instance.isFirst()) {
        completeStartup(startup); // no window of its own will
        return 0;
    }
    const TerminationSignals signals([&application] { application.terminateAtOnce(); });
    QSocketNotifier mainQueue(mainQueueDescriptor(), QSocketNotifier::Read);
    QObject::connect(&mainQueue, &QSocketNotifier::activated, &application, [] { serveMainQueue(); });
    QObject::connect(&application, &ApplicationInstance::terminated, &application, [] { QCoreApplication::exit(0); });

    const auto delegate = makeDelegate();
    application.setDelegate(delegate);
    QObject::connect(&instance, &FirstInstance::startedAgain, &application,
                     [&application](const QByteArray& wanted, const QByteArray& again) {
                         application.reopen(again);
                         application.show(wanted);
                     });
    delegate->awakeFromNib();
    // Inside the loop, so that terminating ends it, also from an alert that is shown at launch.
    QMetaObject::invokeMethod(
        &application,
        [&] {
            delegate->applicationDidFinishLaunching();
            application.show(window);
        },
        Qt::QueuedConnection);
    return QCoreApplication::exec();
}

void terminateApplication()
{
    if (auto* const application = qobject_cast<ApplicationInstance*>(QCoreApplication::instance()))
        application->terminateSoon();
}

void setAutomaticWindowTabbing(bool) { } // windows here never merge into tabs

void orderFrontAboutPanel(const std::string& version, std::vector<std::shared_ptr<Button>> links)
{
    AboutPanel::orderFront(version, std::move(links));
}

} // namespace platform::ui
