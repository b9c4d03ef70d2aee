#pragma once

#include "platform/Queue.h"

#include <deque>
#include <mutex>

namespace platform {

// Its tasks run in turns: a turn takes the tasks that wait when it begins and is itself a task of the target.
class SerialQueue final : public Queue {
public:
    SerialQueue(std::string label, std::shared_ptr<Queue> target);

    void async(Task task) override;
    void sync(const Task& task) override;

private:
    bool append(Task task); // true when the caller has to schedule a turn
    bool takeIfIdle();
    void scheduleTurn();
    void runTurn();
    void finishTurn();

    std::mutex _lock;
    std::deque<Task> _tasks;
    bool _busy = false; // a turn runs or is scheduled
};

} // namespace platform
