#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace helper {

// When automatic updates are tried: an hour after they were switched on or the program was started, and then at the
// interval. Costs nothing as long as they are off.
class AutomaticUpdates {
public:
    // False when it cannot be done now: then it is tried again in an hour, or at the interval when that is shorter.
    // Called on a thread of its own.
    using Attempt = std::function<bool()>;

    AutomaticUpdates(std::chrono::milliseconds interval, Attempt attempt);
    // Waits for an attempt that is being made.
    ~AutomaticUpdates();
    AutomaticUpdates(const AutomaticUpdates&) = delete;
    AutomaticUpdates& operator=(const AutomaticUpdates&) = delete;

    // Any thread; never waits for an attempt.
    void setEnabled(bool enabled);

private:
    using Clock = std::chrono::steady_clock;

    void run();

    const std::chrono::milliseconds _interval;
    const std::chrono::milliseconds _delay;
    const Attempt _attempt;
    std::mutex _lock; // guards what follows
    std::condition_variable _changed;
    bool _isEnabled = false;
    bool _isEnding = false;
    std::thread _thread;
};

} // namespace helper
