#pragma once

#include "helper/macos/timemachine/TimeMachineTool.h"
#include "platform/Clock.h"
#include "platform/Queue.h"
#include "platform/QueueTelling.h"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace helper {

// Whether Time Machine makes a backup, whoever started it. The system tells nobody, so it is asked: whenever somebody
// wants to know, and again and again only while one runs, until it does not any more.
class TimeMachineWatch {
public:
    struct Pauses {
        std::chrono::milliseconds whileRunning{10'000};
        std::chrono::milliseconds asFresh{2'000}; // so long an answer is taken for another one
    };

    // The handler runs on the queue after a backup began or ended, as far as it was noticed.
    TimeMachineWatch(TimeMachineTool tool, std::shared_ptr<platform::Queue> queue, std::function<void()> handler,
                     Pauses pauses);
    ~TimeMachineWatch();
    TimeMachineWatch(const TimeMachineWatch&) = delete;
    TimeMachineWatch& operator=(const TimeMachineWatch&) = delete;

    // Any thread; asks the tool unless it just has. What cannot be asked is taken for none.
    bool isRunning() const;

private:
    struct State;
    const std::shared_ptr<State> _state;
};

} // namespace helper
