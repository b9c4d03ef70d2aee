#pragma once

#include "platform/Queue.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace platform {

// Holds the value of a condition for all threads and tells the one who follows it of changes, on that one's queue.
template <class Value>
class ValueTeller : public std::enable_shared_from_this<ValueTeller<Value>> {
public:
    ValueTeller(std::shared_ptr<Queue> queue, std::function<void()> handler)
        : _queue(std::move(queue)),
          _handler(std::move(handler))
    {
    }

    Value current() const
    {
        const std::lock_guard lock(_mutex);
        return _value;
    }

    // Told when it differs from the value before, but for the first.
    void publish(Value value)
    {
        {
            const std::lock_guard lock(_mutex);
            const bool isNew = !(value == _value);
            _value = std::move(value);
            _hasFirst = true;
            _published.notify_all();
            if (!isNew || !_tells || std::exchange(_telling, true))
                return;
        }
        _queue->async([self = this->shared_from_this()] { self->tell(); });
    }

    // From then on changes are told.
    void waitForFirst()
    {
        constexpr std::chrono::seconds limit{2};
        std::unique_lock lock(_mutex);
        _published.wait_for(lock, limit, [this] { return _hasFirst; });
        _tells = true;
    }

    void stop()
    {
        const std::lock_guard lock(_mutex);
        _stopped = true;
    }

private:
    void tell()
    {
        {
            const std::lock_guard lock(_mutex);
            _telling = false;
            if (_stopped)
                return;
        }
        _handler();
    }

    const std::shared_ptr<Queue> _queue;
    const std::function<void()> _handler;
    mutable std::mutex _mutex;
    std::condition_variable _published;
    Value _value;
    bool _hasFirst = false;
    bool _tells = false;
    bool _telling = false; // the queue has been asked to
    bool _stopped = false;
};

} // namespace platform
