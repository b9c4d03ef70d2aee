#pragma once

#include "platform/Queue.h"

#include <condition_variable>
#include <mutex>

namespace platform {

// A task that throws has nobody to catch it: the process ends at the throw, as it does for any thread.
inline void runTask(const Queue::Task& task) noexcept
{
    task();
}

// Lets one thread wait for another's one event.
class Completion {
public:
    void signal()
    {
        // Under the lock, so that the waiter cannot leave and destroy this before the call is over.
        std::lock_guard guard(_lock);
        _done = true;
        _wake.notify_one();
    }
    void wait()
    {
        std::unique_lock guard(_lock);
        _wake.wait(guard, [this] { return _done; });
    }

private:
    std::mutex _lock;
    std::condition_variable _wake;
    bool _done = false;
};

// Hands the task to the queue and returns when it has run.
inline void appendAndWait(Queue& queue, const Queue::Task& task)
{
    Completion completion;
    queue.async([&] {
        runTask(task);
        completion.signal();
    });
    completion.wait();
}

} // namespace platform
