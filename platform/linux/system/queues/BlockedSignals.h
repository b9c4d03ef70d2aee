#pragma once

#include <signal.h>

namespace platform {

// While it lives, the thread takes no signals and neither do the threads that it starts, which keep them blocked:
// signals are for the threads that the program knows.
class BlockedSignals {
public:
    BlockedSignals()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &_previous);
    }
    ~BlockedSignals() { pthread_sigmask(SIG_SETMASK, &_previous, nullptr); }
    BlockedSignals(const BlockedSignals&) = delete;
    BlockedSignals& operator=(const BlockedSignals&) = delete;

private:
    sigset_t _previous = {};
};

} // namespace platform
