#pragma once

#include <functional>
#include <memory>
#include <string>

namespace platform {

// A dispatch queue. A serial queue runs its tasks one after another in the order of submission, on the queue that
// it targets (by default the global one). Handles are shared; a queue lives until its last task has run.
class Queue : public std::enable_shared_from_this<Queue> {
public:
    using Task = std::function<void()>;

    // A serial queue. The label is for people who read a debugger or a thread list.
    static std::shared_ptr<Queue> createSerial(std::string label, std::shared_ptr<Queue> target = nullptr);

    // The main thread's queue, served by the application's or helper's main loop.
    static const std::shared_ptr<Queue>& main();
    // The concurrent queue of default priority.
    static const std::shared_ptr<Queue>& global();

    virtual ~Queue() = default;
    const std::string& label() const { return _label; }
    // Null for the main and the global queue, and for a serial queue without an explicit target.
    const std::shared_ptr<Queue>& target() const { return _target; }

    // Returns at once; the task runs later.
    virtual void async(Task task) = 0;
    // Returns when the task has run. May run it on the calling thread. Calling it on a serial queue from one of that
    // queue's own tasks never returns.
    virtual void sync(const Task& task) = 0;

protected:
    Queue(std::string label, std::shared_ptr<Queue> target) : _label(std::move(label)), _target(std::move(target)) { }

private:
    std::string _label;
    std::shared_ptr<Queue> _target;
};

} // namespace platform
