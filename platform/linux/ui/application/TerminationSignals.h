#pragma once

#include "platform/linux/system/queues/EventDescriptor.h"

#include <functional>
#include <QSocketNotifier>
#include <thread>

namespace platform::ui {

// While it lives, calls back from the main loop when the process is asked to end: SIGTERM, SIGINT and SIGHUP, but those
// that the process was started to ignore. When the main loop does not come to it, since a request holds it up, the
// signal ends the process as it would by itself, and so does the end of the display. One object at a time.
class TerminationSignals {
public:
    explicit TerminationSignals(std::function<void()> callBack);
    ~TerminationSignals();
    TerminationSignals(const TerminationSignals&) = delete;
    TerminationSignals& operator=(const TerminationSignals&) = delete;

private:
    void watch() const;

    EventDescriptor _descriptor;
    EventDescriptor _heard; // by the main loop
    EventDescriptor _end;   // of this object
    QSocketNotifier _notifier;
    std::thread _watch;
};

} // namespace platform::ui
