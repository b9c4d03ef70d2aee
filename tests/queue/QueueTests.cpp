#include "platform/Queue.h"
#include "tests/support/ChildProcess.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <doctest/doctest.h>
#include <fstream>
#include <functional>
#include <future>
#include <iterator>
#include <latch>
#include <memory>
#include <mutex>
#include <pthread.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using platform::Queue;
using namespace std::chrono_literals;

namespace {

// Counts how many tasks are inside of it at once.
class Overlap {
public:
    void enter()
    {
        int inside = ++_inside;
        int most = _most;
        while (inside > most && !_most.compare_exchange_weak(most, inside)) { }
        for (int turn = 0; turn < 20; ++turn)
            std::this_thread::yield();
        --_inside;
    }
    int most() const { return _most; }

private:
    std::atomic<int> _inside = 0;
    std::atomic<int> _most = 0;
};

void runThreads(int count, const std::function<void(int)>& body)
{
    std::vector<std::thread> threads;
    for (int index = 0; index < count; ++index)
        threads.emplace_back(body, index);
    for (auto& thread : threads)
        thread.join();
}

bool eventually(const std::function<bool()>& condition)
{
    for (auto end = std::chrono::steady_clock::now() + 10s; std::chrono::steady_clock::now() < end;) {
        if (condition())
            return true;
        std::this_thread::sleep_for(1ms);
    }
    return false;
}

// How often a thread of this process has gone to sleep.
std::string sleepsOfThread(pid_t thread)
{
    std::ifstream status("/proc/self/task/" + std::to_string(thread) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with("voluntary_ctxt_switches"))
            return line;
    }
    return {};
}

} // namespace

TEST_CASE("a serial queue runs its tasks one at a time and each thread's tasks in that thread's order")
{
    auto queue = Queue::createSerial("com.zerkolin.order");
    Overlap overlap;
    std::vector<std::vector<int>> order(4);
    runThreads(4, [&](int thread) {
        for (int number = 0; number < 200; ++number) {
            auto task = [&, thread, number] {
                overlap.enter();
                order[static_cast<std::size_t>(thread)].push_back(number);
            };
            number % 7 == 6 ? queue->sync(task) : queue->async(task);
        }
    });
    queue->sync([] { });

    CHECK(overlap.most() == 1);
    for (const auto& numbers : order) {
        CHECK(numbers.size() == 200);
        CHECK(std::is_sorted(numbers.begin(), numbers.end()));
    }
}

TEST_CASE("the global queue runs tasks at the same time")
{
    std::latch meeting(3);
    std::latch done(3);
    for (int index = 0; index < 3; ++index) {
        Queue::global()->async([&] {
            meeting.arrive_and_wait();
            done.count_down();
        });
    }
    done.wait();
    CHECK(meeting.try_wait());
}

TEST_CASE("the global queue gets through many more tasks than it runs at once")
{
    constexpr int count = 5000;
    std::latch done(count);
    std::atomic<int> ran = 0;
    for (int index = 0; index < count; ++index) {
        Queue::global()->async([&] {
            ++ran;
            done.count_down();
        });
    }
    done.wait();
    CHECK(ran == count);
}

TEST_CASE("a synchronous task of the global queue runs on the calling thread")
{
    std::thread::id ranOn;
    Queue::global()->sync([&] { ranOn = std::this_thread::get_id(); });
    CHECK(ranOn == std::this_thread::get_id());
}

TEST_CASE("a synchronous task of an idle serial queue runs on the calling thread, targets included")
{
    auto base = Queue::createSerial("com.zerkolin.base");
    auto middle = Queue::createSerial("com.zerkolin.middle", base);
    auto top = Queue::createSerial("com.zerkolin.top", middle);
    for (const auto& queue : {base, middle, top}) {
        std::thread::id ranOn;
        queue->sync([&] { ranOn = std::this_thread::get_id(); });
        CHECK(ranOn == std::this_thread::get_id());
    }
}

TEST_CASE("a synchronous task waits for the tasks before it and goes before those after it")
{
    auto queue = Queue::createSerial("com.zerkolin.turn");
    std::promise<void> opened;
    std::vector<int> order;
    queue->async([&, gate = opened.get_future().share()] {
        gate.wait();
        order.push_back(1);
    });
    queue->async([&] { order.push_back(2); });
    std::thread opener([&] {
        std::this_thread::sleep_for(20ms);
        opened.set_value();
    });
    queue->sync([&] { order.push_back(3); });
    CHECK(order == std::vector{1, 2, 3});
    queue->async([&] { order.push_back(4); });
    queue->sync([] { });
    CHECK(order == std::vector{1, 2, 3, 4});
    opener.join();
}

TEST_CASE("tasks that are added during a synchronous task run after it")
{
    auto queue = Queue::createSerial("com.zerkolin.during");
    std::vector<int> order;
    queue->sync([&] {
        queue->async([&] { order.push_back(2); });
        std::this_thread::sleep_for(20ms);
        order.push_back(1);
    });
    queue->sync([&] { order.push_back(3); });
    CHECK(order == std::vector{1, 2, 3});
}

TEST_CASE("two queues that target one serial queue never run at once, nor with that queue itself")
{
    auto target = Queue::createSerial("com.zerkolin.target");
    std::vector queues{Queue::createSerial("com.zerkolin.one", target), Queue::createSerial("com.zerkolin.two", target),
                       target};
    Overlap overlap;
    std::atomic<int> ran = 0;
    auto task = [&] {
        overlap.enter();
        ++ran;
    };
    runThreads(6, [&](int thread) {
        auto& queue = queues[static_cast<std::size_t>(thread) % queues.size()];
        for (int number = 0; number < 100; ++number)
            number % 3 == 0 ? queue->sync(task) : queue->async(task);
        queue->sync([] { });
    });
    CHECK(ran == 600);
    CHECK(overlap.most() == 1);
}

TEST_CASE("two queues without a target run at the same time")
{
    std::latch meeting(2);
    auto one = Queue::createSerial("com.zerkolin.one");
    auto two = Queue::createSerial("com.zerkolin.two");
    one->async([&] { meeting.arrive_and_wait(); });
    two->async([&] { meeting.arrive_and_wait(); });
    one->sync([] { });
    two->sync([] { });
    CHECK(meeting.try_wait());
}

TEST_CASE("a queue may target the global queue")
{
    auto queue = Queue::createSerial("com.zerkolin.explicit", Queue::global());
    CHECK(queue->target() == Queue::global());
    std::vector<int> order;
    for (int number = 0; number < 50; ++number)
        queue->async([&, number] { order.push_back(number); });
    queue->sync([] { });
    CHECK(order.size() == 50);
    CHECK(std::is_sorted(order.begin(), order.end()));
}

TEST_CASE("a task may use another queue synchronously, and its own asynchronously")
{
    auto outer = Queue::createSerial("com.zerkolin.outer");
    auto inner = Queue::createSerial("com.zerkolin.inner");
    std::promise<int> answer;
    outer->async([&] {
        int value = 0;
        inner->sync([&] { value = 41; });
        outer->async([&, value] { answer.set_value(value + 1); });
    });
    CHECK(answer.get_future().get() == 42);
}

TEST_CASE("tasks that block the global queue do not keep a serial queue from running")
{
    auto queue = Queue::createSerial("com.zerkolin.needed");
    std::promise<void> busy;
    queue->async([gate = busy.get_future().share()] { gate.wait(); });

    // More than run at once, each waiting for the serial queue's next turn.
    constexpr int count = 100;
    std::latch done(count);
    for (int index = 0; index < count; ++index) {
        Queue::global()->async([&] {
            queue->sync([] { });
            done.count_down();
        });
    }
    std::this_thread::sleep_for(20ms);
    busy.set_value();
    done.wait();
    CHECK(done.try_wait());
}

TEST_CASE("a queue without handles lives until its last task has run, and no longer")
{
    std::promise<void> opened;
    std::promise<void> finished;
    std::weak_ptr<Queue> weak;
    {
        auto queue = Queue::createSerial("com.zerkolin.short");
        weak = queue;
        queue->async([gate = opened.get_future().share()] { gate.wait(); });
        queue->async([&] { finished.set_value(); });
    }
    CHECK_FALSE(weak.expired());
    opened.set_value();
    finished.get_future().wait();
    CHECK(eventually([&] { return weak.expired(); }));
}

TEST_CASE("what a task holds is dropped before the next task runs")
{
    auto queue = Queue::createSerial("com.zerkolin.captures");
    auto held = std::make_shared<int>(7);
    std::weak_ptr<int> weak = held;
    queue->async([held] { });
    held.reset();
    bool dropped = false;
    queue->sync([] { });
    queue->async([&] { dropped = weak.expired(); });
    queue->sync([] { });
    CHECK(dropped);
}

TEST_CASE("a queue knows its label and target, and the thread that runs its tasks shows the label's end")
{
    auto target = Queue::createSerial("com.zerkolin.target");
    auto queue = Queue::createSerial("com.zerkolin.labels-and-targets", target);
    CHECK(queue->label() == "com.zerkolin.labels-and-targets");
    CHECK(queue->target() == target);
    CHECK(target->target() == nullptr);

    std::promise<std::string> name;
    target->async([&] {
        char text[16] = {};
        ::pthread_getname_np(::pthread_self(), text, sizeof text);
        name.set_value(text);
    });
    CHECK(name.get_future().get() == "zerkolin.target");
}

TEST_CASE("threads that wait for work do not wake by themselves")
{
    std::latch meeting(4);
    std::latch done(4);
    std::vector<pid_t> threads(4);
    for (auto& thread : threads) {
        Queue::global()->async([&] {
            thread = ::gettid();
            meeting.arrive_and_wait();
            done.count_down();
        });
    }
    done.wait();
    std::this_thread::sleep_for(50ms);
    std::vector<std::string> before;
    std::ranges::transform(threads, std::back_inserter(before), sleepsOfThread);
    std::this_thread::sleep_for(300ms);
    for (std::size_t index = 0; index < threads.size(); ++index) {
        CHECK_FALSE(before[index].empty());
        CHECK(sleepsOfThread(threads[index]) == before[index]);
    }
}

TEST_CASE("the process's signals are not delivered to the threads of the queues")
{
    std::promise<bool> blocked;
    Queue::createSerial("com.zerkolin.signals")->async([&] {
        sigset_t mask;
        ::pthread_sigmask(SIG_SETMASK, nullptr, &mask);
        blocked.set_value(::sigismember(&mask, SIGTERM) && ::sigismember(&mask, SIGINT)
                          && ::sigismember(&mask, SIGCHLD));
    });
    CHECK(blocked.get_future().get());
}

TEST_CASE("a task that throws ends the process instead of letting the exception through")
{
    pid_t child = ::fork();
    if (child == 0) {
        const rlimit none{0, 0};
        ::setrlimit(RLIMIT_CORE, &none);
        ::signal(SIGABRT, SIG_DFL); // without the test framework's report
        ::close(STDERR_FILENO);
        try {
            Queue::createSerial("com.zerkolin.throws")->sync([] { throw 1; });
        } catch (int) {
            ::_exit(0);
        }
        ::_exit(1);
    }
    int status = 0;
    REQUIRE(::waitpid(child, &status, 0) == child);
    REQUIRE(WIFSIGNALED(status));
    CHECK(WTERMSIG(status) == SIGABRT);
}

TEST_CASE("a process whose queues are at work ends at once and in order")
{
    for (int round = 0; round < 10; ++round) {
        ChildProcess probe({QUEUE_EXIT_PROBE});
        CHECK(probe.readLine() == "ready");
        CHECK(probe.wait() == 0);
    }
}
