#include "platform/linux/system/queues/ThreadPool.h"

#include "platform/linux/system/queues/RunTask.h"

#include <algorithm>
#include <csignal>
#include <pthread.h>
#include <system_error>
#include <thread>
#include <utility>

namespace platform {

namespace {

// Threads inherit the mask: the process's signals are for the threads that know of them.
class BlockSignals {
public:
    BlockSignals()
    {
        sigset_t all;
        ::sigfillset(&all);
        ::pthread_sigmask(SIG_SETMASK, &all, &_previous);
    }
    BlockSignals(const BlockSignals&) = delete;
    BlockSignals& operator=(const BlockSignals&) = delete;
    ~BlockSignals() { ::pthread_sigmask(SIG_SETMASK, &_previous, nullptr); }

private:
    sigset_t _previous;
};

} // namespace

ThreadPool& ThreadPool::shared()
{
    static auto& pool = *new ThreadPool;
    return pool;
}

void ThreadPool::runTask(Queue::Task task)
{
    std::lock_guard guard(_lock);
    _tasks.push_back(std::move(task));
    addThreadIfNeeded();
    _wake.notify_one();
}

void ThreadPool::runSerial(Queue::Task turn)
{
    std::lock_guard guard(_lock);
    _turns.push_back(std::move(turn));
    addThreadIfNeeded();
    _wake.notify_one();
}

std::size_t ThreadPool::runnable() const
{
    return _turns.size() + std::min(_tasks.size(), maximumTasks - _runningTasks);
}

void ThreadPool::addThreadIfNeeded()
{
    if (runnable() <= _idle || _threads == maximumThreads)
        return;
    BlockSignals block;
    try {
        std::thread([this] { work(); }).detach();
        ++_threads;
        ++_idle;
    } catch (const std::system_error&) {
        // The work waits for a thread that is there, or for the next attempt.
    }
}

void ThreadPool::work()
{
    std::unique_lock guard(_lock);
    for (;;) {
        _wake.wait(guard, [this] { return hasWork(); });
        --_idle;
        bool isTurn = !_turns.empty();
        auto& waiting = isTurn ? _turns : _tasks;
        auto task = std::move(waiting.front());
        waiting.pop_front();
        if (!isTurn)
            ++_runningTasks;
        guard.unlock();
        platform::runTask(task);
        task = nullptr;
        guard.lock();
        if (!isTurn)
            --_runningTasks;
        ++_idle;
    }
}

} // namespace platform
