#pragma once

#include <initializer_list>
#include <signal.h>

namespace platform {

// Blocks the signals in this thread and those that it starts: they are for an event loop or a descriptor alone, and
// one that comes while nobody listens waits until somebody does. Returns them.
inline sigset_t blockSignals(std::initializer_list<int> numbers)
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : numbers)
        sigaddset(&signals, number);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signals;
}

} // namespace platform
