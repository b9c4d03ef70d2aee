#include "agent/StatusFollower.h"

#include "messaging/BRVHelperMessager.h"
#include "platform/Queue.h"
#include "protocol/BackupStatus.h"

namespace agent {

using platform::ClockTimer;
using platform::Dictionary;
using platform::Queue;
using platform::Result;

namespace {

// Much changes at once, as when a backup starts.
constexpr std::chrono::seconds shortPause{2};

// A helper that does not answer is asked again so often, after a pause that doubles. Then it has to be heard of.
constexpr int mostTries = 8;
constexpr std::chrono::seconds firstRetry{10};

} // namespace

std::shared_ptr<StatusFollower> StatusFollower::create(Handler handler)
{
    const auto follower = std::shared_ptr<StatusFollower>(new StatusFollower(std::move(handler)));
    follower->begin();
    return follower;
}

void StatusFollower::begin()
{
    const auto askNow = [self = weak_from_this()] {
        if (const auto follower = self.lock())
            follower->ask();
    };
    _pause = ClockTimer::create(ClockTimer::Clock::SinceBoot, Queue::main(), askNow);
    _moment = ClockTimer::create(ClockTimer::Clock::SinceEpoch, Queue::main(), askNow);
    observe();
    ask();
}

void StatusFollower::observe()
{
    _observer = std::make_unique<platform::DistributedNotificationObserver>(BRVDidChangeBackupStatus,
                                                                            [self = weak_from_this()] {
                                                                                if (const auto follower = self.lock()) {
                                                                                    follower->_failures = 0;
                                                                                    follower->askSoon();
                                                                                }
                                                                            });
}

void StatusFollower::askSoon()
{
    askAfter(shortPause);
}

void StatusFollower::askAt(std::optional<scheduling::Instant> instant)
{
    _moment->set(instant ? std::optional(std::chrono::seconds(*instant)) : std::nullopt);
}

void StatusFollower::askAfter(std::chrono::seconds pause)
{
    if (_isWaiting)
        return;
    _isWaiting = true;
    _pause->set(platform::readClocks().sinceBoot + pause);
}

void StatusFollower::ask()
{
    _pause->set(std::nullopt);
    _isWaiting = false;
    if (_isAsking)
        return askSoon();
    _isAsking = true;
    BRVHelperMessager::sharedMessager()->getStatus(Queue::main(),
                                                   [self = weak_from_this()](const Result<Dictionary>& reply) {
                                                       if (const auto follower = self.lock())
                                                           follower->answered(reply);
                                                   });
}

void StatusFollower::answered(const Result<Dictionary>& reply)
{
    _isAsking = false;
    if (!reply)
        return tryAgain();
    _failures = 0;
    _handler(*reply);
}

void StatusFollower::tryAgain()
{
    if (_failures == mostTries)
        return;
    observe(); // the bus may be another one
    askAfter(firstRetry * (1 << _failures));
    ++_failures;
}

} // namespace agent
