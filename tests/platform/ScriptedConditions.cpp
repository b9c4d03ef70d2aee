#include "tests/platform/ScriptedConditions.h"

#include "platform/Queue.h"
#include "platform/SleepInhibitor.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <list>
#include <mutex>

namespace scripted::conditions {

namespace {

// Runs a handler on its queue, until the one who follows has gone.
struct Listener {
    std::shared_ptr<platform::Queue> queue;
    std::function<void()> handler;
    std::atomic<bool> isStopped = false;
};

template <class Value>
class Fact {
public:
    static Fact& shared()
    {
        static Fact& fact = *new Fact;
        return fact;
    }

    Value value() const
    {
        const std::lock_guard lock(_mutex);
        return _value;
    }
    void set(const Value& value)
    {
        const std::lock_guard lock(_mutex);
        if (value == _value)
            return;
        _value = value;
        for (const auto& listener : _listeners) {
            listener->queue->async([listener] {
                if (!listener->isStopped)
                    listener->handler();
            });
        }
    }
    void reset()
    {
        const std::lock_guard lock(_mutex);
        _value = {};
        for (const auto& listener : _listeners)
            listener->isStopped = true;
        _listeners.clear();
    }
    void add(std::shared_ptr<Listener> listener)
    {
        const std::lock_guard lock(_mutex);
        _listeners.push_back(std::move(listener));
    }
    void remove(const std::shared_ptr<Listener>& listener)
    {
        const std::lock_guard lock(_mutex);
        listener->isStopped = true;
        _listeners.remove(listener);
    }

private:
    mutable std::mutex _mutex;
    Value _value;
    std::list<std::shared_ptr<Listener>> _listeners;
};

template <class Value>
class ScriptedCondition final : public platform::Condition<Value> {
public:
    ScriptedCondition(std::shared_ptr<platform::Queue> queue, std::function<void()> handler)
        : _listener(std::make_shared<Listener>(std::move(queue), std::move(handler)))
    {
        Fact<Value>::shared().add(_listener);
    }
    ~ScriptedCondition() override { Fact<Value>::shared().remove(_listener); }
    Value current() const override { return Fact<Value>::shared().value(); }

private:
    std::shared_ptr<Listener> _listener;
};

struct Inhibitors {
    std::mutex mutex;
    bool isInhibitable = true;
    std::list<std::string> reasons;

    static Inhibitors& shared()
    {
        static auto& inhibitors = *new Inhibitors;
        return inhibitors;
    }
};

class ScriptedInhibitor final : public platform::SleepInhibitor {
public:
    explicit ScriptedInhibitor(const std::string& reason) : _reason(reason)
    {
        auto& all = Inhibitors::shared();
        const std::lock_guard lock(all.mutex);
        all.reasons.push_back(reason);
    }
    ~ScriptedInhibitor() override
    {
        auto& all = Inhibitors::shared();
        const std::lock_guard lock(all.mutex);
        if (const auto found = std::ranges::find(all.reasons, _reason); found != all.reasons.end())
            all.reasons.erase(found);
    }

private:
    std::string _reason;
};

} // namespace

void reset()
{
    Fact<platform::PowerState>::shared().reset();
    Fact<platform::ComputerUse>::shared().reset();
    Fact<platform::SleepPreventers>::shared().reset();
    Fact<platform::NetworkRoute>::shared().reset();
    auto& all = Inhibitors::shared();
    const std::lock_guard lock(all.mutex);
    all.isInhibitable = true;
    all.reasons.clear();
}

void setPower(const platform::PowerState& state)
{
    Fact<platform::PowerState>::shared().set(state);
}

void setUse(const platform::ComputerUse& use)
{
    Fact<platform::ComputerUse>::shared().set(use);
}

void setSleepPreventers(const platform::SleepPreventers& preventers)
{
    Fact<platform::SleepPreventers>::shared().set(preventers);
}

void setRoute(const platform::NetworkRoute& route)
{
    Fact<platform::NetworkRoute>::shared().set(route);
}

void setInhibitable(bool isInhibitable)
{
    auto& all = Inhibitors::shared();
    const std::lock_guard lock(all.mutex);
    all.isInhibitable = isInhibitable;
}

std::vector<std::string> reasonsAgainstSleep()
{
    auto& all = Inhibitors::shared();
    const std::lock_guard lock(all.mutex);
    return {all.reasons.begin(), all.reasons.end()};
}

} // namespace scripted::conditions

namespace platform {

using scripted::conditions::ScriptedCondition;

FollowedCondition<PowerState> followPowerState(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<ScriptedCondition<PowerState>>(std::move(queue), std::move(handler));
}

FollowedCondition<ComputerUse> followComputerUse(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<ScriptedCondition<ComputerUse>>(std::move(queue), std::move(handler));
}

FollowedCondition<SleepPreventers> followSleepPreventers(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<ScriptedCondition<SleepPreventers>>(std::move(queue), std::move(handler));
}

FollowedCondition<NetworkRoute> followNetworkRoute(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<ScriptedCondition<NetworkRoute>>(std::move(queue), std::move(handler));
}

Result<std::unique_ptr<SleepInhibitor>> SleepInhibitor::create(const std::string& reason)
{
    bool isInhibitable = false;
    {
        auto& all = scripted::conditions::Inhibitors::shared();
        const std::lock_guard lock(all.mutex);
        isInhibitable = all.isInhibitable;
    }
    if (!isInhibitable)
        return std::unexpected(Error{POSIXErrorDomain, EHOSTUNREACH, {}, nullptr});
    return std::make_unique<scripted::conditions::ScriptedInhibitor>(reason);
}

} // namespace platform
