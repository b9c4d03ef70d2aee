#include "platform/macos/system/DispatchQueue.h"

#include <utility>

namespace platform {

namespace {

class DispatchQueue final : public Queue {
public:
    DispatchQueue(dispatch_queue_t queue, std::string label, std::shared_ptr<Queue> target)
        : Queue(std::move(label), std::move(target)),
          _queue(queue)
    {
    }

    dispatch_queue_t native() const { return _queue; }

    void async(Task task) override
    {
        dispatch_async(_queue, ^{ task(); });
    }

    void sync(const Task& task) override
    {
        const Task* const performed = &task;
        dispatch_sync(_queue, ^{ (*performed)(); });
    }

private:
    dispatch_queue_t _queue;
};

dispatch_queue_t createQueue(const char* label, dispatch_queue_t target)
{
    if (@available(macOS 10.12, *))
        return dispatch_queue_create_with_target(label, DISPATCH_QUEUE_SERIAL, target);
    const dispatch_queue_t queue = dispatch_queue_create(label, DISPATCH_QUEUE_SERIAL);
    if (target)
        dispatch_set_target_queue(queue, target);
    return queue;
}

// Never destroyed, since threads may still run while the process ends.
const std::shared_ptr<Queue>& keep(dispatch_queue_t queue)
{
    const char* const label = dispatch_queue_get_label(queue);
    return *new std::shared_ptr<Queue>(std::make_shared<DispatchQueue>(queue, label, nullptr));
}

} // namespace

dispatch_queue_t dispatchQueue(const std::shared_ptr<Queue>& queue)
{
    return queue ? static_cast<DispatchQueue&>(*queue).native() : nullptr;
}

std::shared_ptr<Queue> Queue::createSerial(std::string label, std::shared_ptr<Queue> target)
{
    const dispatch_queue_t queue = createQueue(label.c_str(), dispatchQueue(target));
    return std::make_shared<DispatchQueue>(queue, std::move(label), std::move(target));
}

const std::shared_ptr<Queue>& Queue::main()
{
    static const auto& queue = keep(dispatch_get_main_queue());
    return queue;
}

const std::shared_ptr<Queue>& Queue::global()
{
    static const auto& queue = keep(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0));
    return queue;
}

} // namespace platform
