#pragma once

#include "platform/Queue.h"

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

namespace platform {

// Runs a handler on a queue, and not any more once this has gone there.
template <class... Arguments>
class QueueTelling {
public:
    QueueTelling(std::shared_ptr<Queue> queue, std::function<void(Arguments...)> handler)
        : _queue(std::move(queue)),
          _state(std::make_shared<State>(std::move(handler)))
    {
    }
    ~QueueTelling() { _state->isStopped = true; }
    QueueTelling(const QueueTelling&) = delete;
    QueueTelling& operator=(const QueueTelling&) = delete;

    void tell(Arguments... arguments) const
    {
        _queue->async([state = _state, arguments...] {
            if (!state->isStopped)
                state->handler(arguments...);
        });
    }

private:
    struct State {
        explicit State(std::function<void(Arguments...)> told) : handler(std::move(told)) { }
        const std::function<void(Arguments...)> handler;
        std::atomic<bool> isStopped = false;
    };
    std::shared_ptr<Queue> _queue;
    std::shared_ptr<State> _state;
};

} // namespace platform
