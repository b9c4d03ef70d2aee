#include "platform/linux/system/queues/SerialQueue.h"

#include "platform/linux/system/queues/RunTask.h"
#include "platform/linux/system/queues/ThreadPool.h"

#include <pthread.h>
#include <utility>

namespace platform {

namespace {

// A thread's name holds 15 bytes; of a reverse-domain label the end says most.
void nameThread(const std::string& label)
{
    constexpr std::size_t longest = 15;
    ::pthread_setname_np(::pthread_self(), label.c_str() + (label.size() > longest ? label.size() - longest : 0));
}

} // namespace

SerialQueue::SerialQueue(std::string label, std::shared_ptr<Queue> target) : Queue(std::move(label), std::move(target))
{
}

void SerialQueue::async(Task task)
{
    if (append(std::move(task)))
        scheduleTurn();
}

void SerialQueue::sync(const Task& task)
{
    auto self = shared_from_this();
    if (!takeIfIdle()) {
        appendAndWait(*this, task);
        return;
    }
    if (target())
        target()->sync([&] { runTask(task); });
    else
        runTask(task);
    finishTurn();
}

bool SerialQueue::append(Task task)
{
    std::lock_guard guard(_lock);
    _tasks.push_back(std::move(task));
    return !std::exchange(_busy, true);
}

bool SerialQueue::takeIfIdle()
{
    std::lock_guard guard(_lock);
    return !std::exchange(_busy, true);
}

void SerialQueue::scheduleTurn()
{
    auto self = std::static_pointer_cast<SerialQueue>(shared_from_this());
    if (target() && target() != global()) {
        target()->async([self] { self->runTurn(); });
        return;
    }
    ThreadPool::shared().runSerial([self] {
        nameThread(self->label());
        self->runTurn();
    });
}

void SerialQueue::runTurn()
{
    std::deque<Task> turn;
    {
        std::lock_guard guard(_lock);
        turn.swap(_tasks);
    }
    while (!turn.empty()) {
        runTask(turn.front());
        turn.pop_front();
    }
    finishTurn();
}

void SerialQueue::finishTurn()
{
    {
        std::lock_guard guard(_lock);
        _busy = !_tasks.empty();
        if (!_busy)
            return;
    }
    scheduleTurn();
}

} // namespace platform
