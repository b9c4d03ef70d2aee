#include "platform/linux/system/queues/ThreadPool.h"

#include "platform/linux/system/queues/BlockedSignals.h"
#include "platform/linux/system/queues/RunTask.h"

#include <algorithm>
#include <system_error>
#include <thread>
#include <utility>

namespace platform {

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
    const BlockedSignals blocked;
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
