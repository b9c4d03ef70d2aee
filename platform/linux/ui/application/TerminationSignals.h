#pragma once

#include "platform/linux/system/queues/EventDescriptor.h"

#include <functional>
#include <QSocketNotifier>

namespace platform::ui {

// While it lives, calls back from the main loop when the process is asked to end: SIGTERM, SIGINT and SIGHUP, but those
// that the process was started to ignore. One object at a time.
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> callBack);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    EventDescriptor _descriptor;
    QSocketNotifier _notifier;
};

} // namespace platform::ui
