#include "helper/macos/timemachine/TimeMachineWatch.h"

#include <utility>

namespace helper {

using platform::ClockTimer;

struct TimeMachineWatch::State : std::enable_shared_from_this<State> {
    State(TimeMachineTool asked, std::shared_ptr<platform::Queue> toldOn, std::function<void()> handler, Pauses given)
        : tool(std::move(asked)),
          pauses(given)
    {
        telling.emplace(std::move(toldOn), std::move(handler));
    }

    bool look(bool isFreshEnough)
    {
        const std::lock_guard guard(lock);
        if (!timer)
            return isRunning; // nobody wants to know any more
        const auto now = platform::readClocks().sinceBoot;
        if (isFreshEnough && askedAt && now - *askedAt < pauses.asFresh)
            return isRunning;
        const auto status = tool.status();
        askedAt = platform::readClocks().sinceBoot;
        const bool runs = status && status->isRunning;
        timer->set(runs ? std::optional(*askedAt + pauses.whileRunning) : std::nullopt);
        if (std::exchange(isRunning, runs) != runs)
            telling->tell();
        return runs;
    }

    const TimeMachineTool tool;
    const Pauses pauses;
    const std::shared_ptr<platform::Queue> queue =
        platform::Queue::createSerial("com.zerkolin.brevane.scheduler.timemachine");
    std::mutex lock; // guards what follows
    std::optional<std::chrono::nanoseconds> askedAt;
    bool isRunning = false;
    std::unique_ptr<ClockTimer> timer; // none at the end
    std::optional<platform::QueueTelling<>> telling;
};

TimeMachineWatch::TimeMachineWatch(TimeMachineTool tool, std::shared_ptr<platform::Queue> queue,
                                   std::function<void()> handler, Pauses pauses)
    : _state(std::make_shared<State>(std::move(tool), std::move(queue), std::move(handler), pauses))
{
    _state->timer = ClockTimer::create(ClockTimer::Clock::SinceBoot, _state->queue, [weak = std::weak_ptr(_state)] {
        if (const auto state = weak.lock())
            state->look(false);
    });
}

TimeMachineWatch::~TimeMachineWatch()
{
    const std::lock_guard guard(_state->lock);
    _state->timer.reset();
    _state->telling.reset();
}

bool TimeMachineWatch::isRunning() const
{
    return _state->look(true);
}

} // namespace helper
