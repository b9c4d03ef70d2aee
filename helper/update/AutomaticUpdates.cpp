#include "helper/update/AutomaticUpdates.h"

#include <algorithm>
#include <utility>

namespace helper {

namespace {

constexpr std::chrono::milliseconds longestDelay = std::chrono::hours(1);

} // namespace

AutomaticUpdates::AutomaticUpdates(std::chrono::milliseconds interval, Attempt attempt)
    : _interval(interval),
      _delay(std::min(interval, longestDelay)),
      _attempt(std::move(attempt))
{
}

AutomaticUpdates::~AutomaticUpdates()
{
    {
        const std::lock_guard guard(_lock);
        _isEnding = true;
    }
    _changed.notify_one();
    if (_thread.joinable())
        _thread.join();
}

void AutomaticUpdates::setEnabled(bool enabled)
{
    const std::lock_guard guard(_lock);
    if (std::exchange(_isEnabled, enabled) == enabled)
        return;
    if (!_thread.joinable())
        _thread = std::thread(&AutomaticUpdates::run, this);
    _changed.notify_one();
}

void AutomaticUpdates::run()
{
    std::unique_lock guard(_lock);
    auto next = Clock::now() + _delay;
    while (!_isEnding) {
        if (!_isEnabled) {
            _changed.wait(guard);
            next = Clock::now() + _delay;
        } else if (Clock::now() < next) {
            _changed.wait_until(guard, next);
        } else {
            guard.unlock();
            const bool isDone = _attempt();
            next = Clock::now() + (isDone ? _interval : _delay);
            guard.lock();
        }
    }
}

} // namespace helper
