#pragma once

#include <functional>

namespace platform::ui {

// From now on a signal that asks this process to end (SIGTERM, SIGINT, SIGHUP) calls this on the main thread. Where
// that does not come to it, the signal ends the process. Once.
void handleTerminationSignals(std::function<void()> callBack);

} // namespace platform::ui
