#pragma once

#include "platform/Queue.h"

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>

namespace platform {

// The threads that all queues share. They are made when there is more to run than threads that wait for work, and
// then wait without time limit. The pool is never destroyed: its threads may run until the process is gone.
class ThreadPool {
public:
    static ThreadPool& shared();

    // Work of the global queue. So much of it runs at once, and the rest waits, however much of it blocks.
    void runTask(Queue::Task task);
    // A serial queue's turn. It never waits behind tasks that block, because they may be waiting for that queue.
    void runSerial(Queue::Task turn);

private:
    ThreadPool() = default;
    bool hasWork() const { return !_turns.empty() || canRunTask(); }
    bool canRunTask() const { return !_tasks.empty() && _runningTasks < maximumTasks; }
    std::size_t runnable() const;
    void addThreadIfNeeded();
    void work();

    static constexpr std::size_t maximumTasks = 64;
    static constexpr std::size_t maximumThreads = 512;

    std::mutex _lock;
    std::condition_variable _wake;
    std::deque<Queue::Task> _turns;
    std::deque<Queue::Task> _tasks;
    std::size_t _runningTasks = 0;
    std::size_t _threads = 0;
    std::size_t _idle = 0; // those that are just starting included
};

} // namespace platform
