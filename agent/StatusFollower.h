#pragma once

#include "platform/Clock.h"
#include "platform/DistributedNotifications.h"
#include "platform/Error.h"
#include "platform/PropertyList.h"
#include "scheduling/Instant.h"

#include <functional>
#include <memory>
#include <optional>

namespace agent {

// Asks the scheduler helper for its status whenever that has changed. Wakes for nothing else. Main thread.
class StatusFollower : public std::enable_shared_from_this<StatusFollower> {
public:
    using Handler = std::function<void(const platform::Dictionary&)>;

    // Asks at once. The handler runs on the main queue for every reply.
    static std::shared_ptr<StatusFollower> create(Handler handler);

    // Shortly: what is asked for in the meantime is asked once.
    void askSoon();
    // Also at this instant, or at none, if nothing makes it ask before.
    void askAt(std::optional<scheduling::Instant> instant);

private:
    explicit StatusFollower(Handler handler) : _handler(std::move(handler)) { }
    void begin();
    void observe();
    void askAfter(std::chrono::seconds pause);
    void ask();
    void answered(const platform::Result<platform::Dictionary>& reply);
    void tryAgain();

    const Handler _handler;
    std::unique_ptr<platform::DistributedNotificationObserver> _observer;
    std::unique_ptr<platform::ClockTimer> _pause;  // until it asks
    std::unique_ptr<platform::ClockTimer> _moment; // at which it asks
    bool _isWaiting = false;                       // for the pause to be over
    bool _isAsking = false;
    int _failures = 0; // since the helper was heard of last
};

} // namespace agent
