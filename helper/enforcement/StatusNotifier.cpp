#include "helper/enforcement/StatusNotifier.h"

#include "platform/DistributedNotifications.h"

#include <utility>

namespace helper {

namespace {

constexpr std::chrono::milliseconds pause{300};

} // namespace

StatusNotifier::StatusNotifier(std::string name, std::shared_ptr<platform::Queue> queue)
    : _name(std::move(name)),
      _timer(platform::ClockTimer::create(platform::ClockTimer::Clock::SinceBoot, std::move(queue), [this] { tell(); }))
{
}

void StatusNotifier::changed()
{
    if (_isWaiting)
        return;
    const auto now = platform::readClocks().sinceBoot;
    if (!_told || now - *_told >= pause) {
        tell();
        return;
    }
    _isWaiting = true;
    _timer->set(*_told + pause);
}

void StatusNotifier::tell()
{
    _isWaiting = false;
    _told = platform::readClocks().sinceBoot;
    // The connection may be one that the bus has left; the next one is new.
    if (!platform::postDistributedNotification(_name))
        platform::postDistributedNotification(_name);
}

} // namespace helper
