#pragma once

#include <chrono>
#include <ctime>

// What this thread has computed since the beginning. Unlike the clock it does not count others' work on a busy machine.
class ProcessorTime {
public:
    std::chrono::milliseconds elapsed() const
    {
        return std::chrono::duration_cast<std::chrono::milliseconds>(now() - _start);
    }

private:
    static std::chrono::nanoseconds now()
    {
        timespec time{};
        ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
    }

    std::chrono::nanoseconds _start = now();
};
