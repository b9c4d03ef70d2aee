#include "platform/linux/system/queues/MainQueue.h"

#include "platform/linux/system/queues/EventDescriptor.h"
#include "platform/linux/system/queues/RunTask.h"
#include "platform/Queue.h"

#include <deque>
#include <unistd.h>
#include <utility>

namespace platform {

namespace {

bool isMainThread()
{
    return ::gettid() == ::getpid();
}

class MainQueue final : public Queue {
public:
    MainQueue() : Queue("com.zerkolin.main-thread", nullptr) { }

    void async(Task task) override
    {
        std::lock_guard guard(_lock);
        _tasks.push_back(std::move(task));
        if (_tasks.size() == 1 && !_serving)
            _event.signal();
    }

    void sync(const Task& task) override
    {
        if (isMainThread())
            runTask(task);
        else
            appendAndWait(*this, task);
    }

    int descriptor() const { return _event.get(); }

    void serve()
    {
        std::deque<Task> turn;
        {
            std::lock_guard guard(_lock);
            if (_serving)
                return;
            _serving = true;
            _event.reset();
            turn.swap(_tasks);
        }
        while (!turn.empty()) {
            runTask(turn.front());
            turn.pop_front();
        }
        std::lock_guard guard(_lock);
        _serving = false;
        if (!_tasks.empty())
            _event.signal();
    }

private:
    EventDescriptor _event; // wakes the loop
    std::mutex _lock;
    std::deque<Task> _tasks;
    bool _serving = false;
};

const std::shared_ptr<MainQueue>& mainQueue()
{
    // Never destroyed, since threads may still run while the process ends.
    static const auto& queue = *new std::shared_ptr<MainQueue>(std::make_shared<MainQueue>());
    return queue;
}

} // namespace

const std::shared_ptr<Queue>& Queue::main()
{
    static const auto& queue = *new std::shared_ptr<Queue>(mainQueue());
    return queue;
}

int mainQueueDescriptor()
{
    return mainQueue()->descriptor();
}

void serveMainQueue()
{
    mainQueue()->serve();
}

} // namespace platform
