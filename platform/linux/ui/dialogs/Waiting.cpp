#include "platform/ui/Waiting.h"

#include "platform/linux/ui/dialogs/WaitingWindow.h"
#include "platform/Queue.h"

#include <memory>
#include <QEventLoop>
#include <QPointer>
#include <QTimer>

namespace platform::ui {

namespace {

constexpr int patience = 3000; // milliseconds

} // namespace

bool waitFor(const std::string& text, std::function<void()> work)
{
    QEventLoop loop;
    const auto isDone = std::make_shared<bool>(false); // main thread only
    Queue::global()->async([work = std::move(work), isDone, waiting = QPointer(&loop)] {
        work();
        Queue::main()->async([isDone, waiting] {
            *isDone = true;
            if (waiting)
                waiting->quit();
        });
    });
    // What the user does to other windows meanwhile comes afterwards.
    bool isLate = false;
    QTimer::singleShot(patience, &loop, [&] {
        isLate = true;
        loop.quit();
    });
    loop.exec(QEventLoop::ExcludeUserInputEvents);
    if (*isDone || !isLate)
        return *isDone;
    WaitingWindow window(text);
    QObject::connect(&window, &QDialog::rejected, &loop, &QEventLoop::quit);
    window.show();
    loop.exec();
    return *isDone;
}

} // namespace platform::ui
