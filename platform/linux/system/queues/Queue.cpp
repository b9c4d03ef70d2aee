#include "platform/Queue.h"

#include "platform/linux/system/queues/RunTask.h"
#include "platform/linux/system/queues/SerialQueue.h"
#include "platform/linux/system/queues/ThreadPool.h"

namespace platform {

namespace {

class GlobalQueue final : public Queue {
public:
    GlobalQueue() : Queue("com.zerkolin.global", nullptr) { }

    void async(Task task) override { ThreadPool::shared().runTask(std::move(task)); }
    // It is concurrent, so the task waits for nobody.
    void sync(const Task& task) override { runTask(task); }
};

} // namespace

std::shared_ptr<Queue> Queue::createSerial(std::string label, std::shared_ptr<Queue> target)
{
    return std::make_shared<SerialQueue>(std::move(label), std::move(target));
}

const std::shared_ptr<Queue>& Queue::global()
{
    // Never destroyed, since threads may still run while the process ends.
    static const auto& queue = *new std::shared_ptr<Queue>(std::make_shared<GlobalQueue>());
    return queue;
}

} // namespace platform
