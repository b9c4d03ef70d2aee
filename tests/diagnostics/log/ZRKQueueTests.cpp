#include "diagnostics/log/ZRKQueue.h"

#include <doctest/doctest.h>
#include <future>
#include <vector>

namespace {

// Runs before main, and perhaps before the queue's own initialiser.
const platform::Queue* const queueAtLoadTime = ZRKQueueMain().get();
const bool ranAtLoadTime = [] {
    std::promise<bool> ran;
    ZRKQueueMain()->async([&] { ran.set_value(true); });
    return ran.get_future().get();
}();

} // namespace

TEST_CASE("the shared work queue is there and works before main runs, and is never replaced")
{
    CHECK(queueAtLoadTime != nullptr);
    CHECK(ranAtLoadTime);
    CHECK(ZRKQueueMain().get() == queueAtLoadTime);
}

TEST_CASE("the shared work queue is a private serial queue, not the main thread's")
{
    CHECK(ZRKQueueMain()->label() == "com.zerkolin.main");
    CHECK(ZRKQueueMain()->target() == nullptr);
    CHECK(ZRKQueueMain() != platform::Queue::main());
}

TEST_CASE("a queue is made with its label and without a target, or with the one it is given")
{
    auto target = ZRKQueueContextCreate("com.zerkolin.target");
    CHECK(target->label() == "com.zerkolin.target");
    CHECK(target->target() == nullptr);
    auto queue = ZRKQueueCreate("com.zerkolin.queue", target);
    CHECK(queue->label() == "com.zerkolin.queue");
    CHECK(queue->target() == target);
    CHECK(ZRKQueueContextCreate("com.zerkolin.target") != target);

    std::vector<int> order;
    queue->async([&] { order.push_back(1); });
    queue->sync([&] { order.push_back(2); });
    CHECK(order == std::vector{1, 2});
}
