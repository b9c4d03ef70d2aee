#pragma once

#include "platform/Condition.h"
#include "platform/Queue.h"

#include <chrono>
#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>

// Counts what is told on a queue, and waits for it.
class Tellings {
public:
    void add()
    {
        const std::lock_guard lock(_mutex);
        ++_count;
        _changed.notify_all();
    }
    int count() const
    {
        const std::lock_guard lock(_mutex);
        return _count;
    }
    // Waits for the condition to be true when more has been told than at the last success. False after ten seconds.
    bool waitForMoreUntil(const std::function<bool()>& condition)
    {
        std::unique_lock lock(_mutex);
        const auto isTrue = [&] { return _count > _seen && condition(); };
        if (!_changed.wait_for(lock, std::chrono::seconds(10), isTrue))
            return false;
        _seen = _count;
        return true;
    }

private:
    mutable std::mutex _mutex;
    std::condition_variable _changed;
    int _count = 0;
    int _seen = 0;
};

// Follows a condition; its value is looked at only when a change is told, as its users do.
template <class Value>
class Following {
public:
    using Follow = platform::FollowedCondition<Value> (*)(std::shared_ptr<platform::Queue>, std::function<void()>);

    explicit Following(Follow follow)
        : _condition(follow(platform::Queue::createSerial("test"), [tellings = _tellings] { tellings->add(); }))
    {
    }

    Value current() const { return _condition->current(); }
    int told() const { return _tellings->count(); }
    // A change that is not told goes unseen here. So each change must be awaited before the next one is made where the
    // tellings are counted: a telling that is still on its way stands for both.
    bool becomes(const std::function<bool(const Value&)>& expected)
    {
        return _tellings->waitForMoreUntil([&] { return expected(_condition->current()); });
    }
    bool becomes(const Value& expected)
    {
        return becomes([&](const Value& value) { return value == expected; });
    }

private:
    std::shared_ptr<Tellings> _tellings = std::make_shared<Tellings>();
    platform::FollowedCondition<Value> _condition;
};
