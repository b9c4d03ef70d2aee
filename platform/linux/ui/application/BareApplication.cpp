#include "platform/ui/BareApplication.h"

#include "platform/linux/system/queues/MainQueue.h"
#include "platform/linux/ui/application/ApplicationInstance.h"

#include <QElapsedTimer>
#include <QSocketNotifier>

namespace platform::ui {

int runWithControls(int argc, char** argv, const std::function<int()>& body)
{
    ApplicationInstance application(argc, argv);
    QSocketNotifier mainQueue(mainQueueDescriptor(), QSocketNotifier::Read);
    QObject::connect(&mainQueue, &QSocketNotifier::activated, &application, [] { serveMainQueue(); });
    return body();
}

bool serveUntil(const std::function<bool()>& isDone, double seconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!isDone()) {
        if (timer.elapsed() > static_cast<qint64>(seconds * 1000))
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    }
    return true;
}

} // namespace platform::ui
