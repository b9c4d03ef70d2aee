#include "platform/linux/system/queues/MainQueue.h"
#include "platform/Queue.h"

#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <poll.h>
#include <thread>
#include <vector>

using platform::Queue;

namespace {

bool isReadable(int milliseconds = 0)
{
    pollfd entry{platform::mainQueueDescriptor(), POLLIN, 0};
    return ::poll(&entry, 1, milliseconds) == 1;
}

} // namespace

TEST_CASE("the main queue's descriptor is readable exactly while tasks wait")
{
    CHECK_FALSE(isReadable());
    int ran = 0;
    Queue::main()->async([&] { ++ran; });
    Queue::main()->async([&] { ++ran; });
    CHECK(isReadable());
    CHECK(ran == 0);
    platform::serveMainQueue();
    CHECK(ran == 2);
    CHECK_FALSE(isReadable());
    platform::serveMainQueue();
    CHECK(ran == 2);
}

TEST_CASE("tasks for the main queue from other threads wake its loop and run on the main thread in order")
{
    std::vector<int> order;
    std::thread sender([&] {
        for (int number = 0; number < 100; ++number)
            Queue::main()->async([&, number, origin = std::this_thread::get_id()] {
                CHECK(std::this_thread::get_id() != origin);
                order.push_back(number);
            });
    });
    while (order.size() < 100) {
        REQUIRE(isReadable(10000));
        platform::serveMainQueue();
    }
    sender.join();
    for (int number = 0; number < 100; ++number)
        CHECK(order[static_cast<std::size_t>(number)] == number);
}

TEST_CASE("a synchronous task for the main queue runs in place on the main thread")
{
    bool ran = false;
    Queue::main()->sync([&] { ran = true; });
    CHECK(ran);
}

TEST_CASE("a synchronous task for the main queue from another thread waits for the loop")
{
    std::atomic<bool> returned = false;
    bool ran = false;
    std::thread::id ranOn;
    std::thread sender([&] {
        Queue::main()->sync([&] {
            ran = true;
            ranOn = std::this_thread::get_id();
        });
        returned = true;
    });
    REQUIRE(isReadable(10000));
    CHECK_FALSE(returned);
    platform::serveMainQueue();
    sender.join();
    CHECK(ran);
    CHECK(ranOn == std::this_thread::get_id());
}

TEST_CASE("a task that a task of the main queue adds waits for the next round")
{
    std::vector<int> order;
    Queue::main()->async([&] {
        order.push_back(1);
        Queue::main()->async([&] { order.push_back(3); });
    });
    Queue::main()->async([&] { order.push_back(2); });
    platform::serveMainQueue();
    CHECK(order == std::vector{1, 2});
    CHECK(isReadable());
    platform::serveMainQueue();
    CHECK(order == std::vector{1, 2, 3});
    CHECK_FALSE(isReadable());
}

TEST_CASE("a loop inside of a task of the main queue runs none of the queue's tasks and is not woken for them")
{
    std::vector<int> order;
    Queue::main()->async([&] {
        order.push_back(1);
        Queue::main()->async([&] { order.push_back(4); });
        CHECK_FALSE(isReadable());
        platform::serveMainQueue();
        order.push_back(2);
    });
    Queue::main()->async([&] { order.push_back(3); });
    platform::serveMainQueue();
    CHECK(order == std::vector{1, 2, 3});
    CHECK(isReadable());
    platform::serveMainQueue();
    CHECK(order == std::vector{1, 2, 3, 4});
}

TEST_CASE("a queue that targets the main queue runs on the main thread only")
{
    auto queue = Queue::createSerial("com.zerkolin.on-main", Queue::main());
    std::vector<int> order;
    queue->async([&] { order.push_back(1); });
    std::thread sender([&] {
        // The queue is idle once its first task has run; then this goes through the main queue by itself.
        queue->sync([&] { order.push_back(2); });
    });
    while (order.size() < 2) {
        REQUIRE(isReadable(10000));
        platform::serveMainQueue();
    }
    sender.join();
    CHECK(order == std::vector{1, 2});
    while (isReadable())
        platform::serveMainQueue();
}
