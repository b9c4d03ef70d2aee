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
    // False when the condition has not come true after ten seconds of waiting for more to be told.
    bool waitUntil(const std::function<bool()>& condition)
    {
        std::unique_lock lock(_mutex);
        return _changed.wait_for(lock, std::chrono::seconds(10), condition);
    }

private:
    mutable std::mutex _mutex;
    std::condition_variable _changed;
    int _count = 0;
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
    bool becomes(const std::function<bool(const Value&)>& expected)
    {
        return _tellings->waitUntil([&] { return expected(_condition->current()); });
    }
    bool becomes(const Value& expected)
    {
        return becomes([&](const Value& value) { return value == expected; });
    }

private:
    std::shared_ptr<Tellings> _tellings = std::make_shared<Tellings>();
    platform::FollowedCondition<Value> _condition;
};
