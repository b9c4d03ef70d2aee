#pragma once

#include "platform/linux/system/queues/EventDescriptor.h"
#include "platform/linux/system/queues/EventHandles.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

struct inotify_event;

namespace platform {

class ConditionsBus;

// The thread on which the machine's conditions are followed. It waits for the kernel and the system bus, without a
// time limit, and does nothing else. It starts with the first task and is never ended.
class ConditionsThread {
public:
    using Task = std::function<void()>;

    static ConditionsThread& shared();

    // Returns when the task has run; at once on the thread itself. Everything else here is for the thread alone.
    void sync(const Task& task);

    // Runs the handler whenever the descriptor, which stays the caller's, has something to read. Null on failure.
    EventSource watchDescriptor(int descriptor, std::function<void()> handler);
    // Runs the handler for every event of the path. Null when it cannot be watched, as when it is not there.
    using FileHandler = std::function<void(const inotify_event&)>;
    EventSource watchFile(const std::string& path, std::uint32_t mask, FileHandler handler);
    // Runs the handler once after some time awake.
    EventSource runAfter(std::chrono::milliseconds delay, std::function<void()> handler);

    ConditionsBus& bus() { return *_bus; }
    sd_event* event() const { return _event.get(); }

private:
    ConditionsThread();
    void run();
    void runTasks();

    EventHandle _event;
    EventDescriptor _wake;
    std::unique_ptr<ConditionsBus> _bus;
    std::mutex _mutex; // of the tasks
    std::deque<Task> _tasks;
};

} // namespace platform
