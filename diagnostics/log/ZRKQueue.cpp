#include "diagnostics/log/ZRKQueue.h"

#include <utility>

namespace {

// Made at load time, or earlier when another load-time initialiser asks first. Never destroyed, since threads may
// still use it while the process ends.
const std::shared_ptr<platform::Queue>& mainQueue()
{
    static const auto& _mainQueue = *new std::shared_ptr<platform::Queue>(ZRKQueueContextCreate("com.zerkolin.main"));
    return _mainQueue;
}

[[gnu::constructor]] void ZRKQueueInit()
{
    mainQueue();
}

} // namespace

const std::shared_ptr<platform::Queue>& ZRKQueueMain()
{
    return mainQueue();
}

std::shared_ptr<platform::Queue> ZRKQueueContextCreate(std::string label)
{
    return platform::Queue::createSerial(std::move(label));
}

std::shared_ptr<platform::Queue> ZRKQueueCreate(std::string label, std::shared_ptr<platform::Queue> target)
{
    return platform::Queue::createSerial(std::move(label), std::move(target));
}
