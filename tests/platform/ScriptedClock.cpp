#include "tests/platform/ScriptedClock.h"

#include "platform/Clock.h"
#include "platform/Queue.h"

#include <atomic>
#include <list>
#include <mutex>

namespace scripted::clock {

namespace {

using platform::ClockEvent;
using platform::ClockReading;
using platform::ClockTimer;
using std::chrono::nanoseconds;

constexpr ClockReading start{.sinceEpoch = std::chrono::seconds(1'767'225'600),
                             .sinceBoot = std::chrono::seconds(1000),
                             .awake = std::chrono::seconds(1000)};

struct Watch {
    std::shared_ptr<platform::Queue> queue;
    std::function<void(ClockEvent)> handler;
    std::atomic<bool> isStopped = false;
};

struct Timer {
    ClockTimer::Clock clock;
    std::shared_ptr<platform::Queue> queue;
    std::function<void()> handler;
    std::optional<nanoseconds> moment;
    std::atomic<bool> isStopped = false;
};

struct Machine {
    std::mutex mutex;
    ClockReading now = start;
    std::string zone = "UTC";
    std::list<std::shared_ptr<Watch>> watches;
    std::list<std::shared_ptr<Timer>> timers;

    static Machine& shared()
    {
        static auto& machine = *new Machine;
        return machine;
    }

    // The rest with the lock held.
    void tell(ClockEvent event)
    {
        for (const auto& watch : watches) {
            watch->queue->async([watch, event] {
                if (!watch->isStopped)
                    watch->handler(event);
            });
        }
    }

    void fire(const std::shared_ptr<Timer>& timer) const
    {
        const auto present = timer->clock == ClockTimer::Clock::SinceEpoch ? now.sinceEpoch : now.sinceBoot;
        if (!timer->moment || *timer->moment > present)
            return;
        timer->moment.reset();
        timer->queue->async([timer] {
            if (!timer->isStopped)
                timer->handler();
        });
    }

    void fireTimers() const
    {
        for (const auto& timer : timers)
            fire(timer);
    }
};

class ScriptedWatch final : public platform::ClockWatch {
public:
    explicit ScriptedWatch(std::shared_ptr<Watch> watch) : _watch(std::move(watch))
    {
        const std::lock_guard lock(Machine::shared().mutex);
        Machine::shared().watches.push_back(_watch);
    }
    ~ScriptedWatch() override
    {
        _watch->isStopped = true;
        const std::lock_guard lock(Machine::shared().mutex);
        Machine::shared().watches.remove(_watch);
    }

private:
    std::shared_ptr<Watch> _watch;
};

class ScriptedTimer final : public ClockTimer {
public:
    explicit ScriptedTimer(std::shared_ptr<Timer> timer) : _timer(std::move(timer))
    {
        const std::lock_guard lock(Machine::shared().mutex);
        Machine::shared().timers.push_back(_timer);
    }
    ~ScriptedTimer() override
    {
        _timer->isStopped = true;
        const std::lock_guard lock(Machine::shared().mutex);
        Machine::shared().timers.remove(_timer);
    }
    void set(std::optional<nanoseconds> moment) override
    {
        const std::lock_guard lock(Machine::shared().mutex);
        _timer->moment = moment;
        Machine::shared().fire(_timer);
    }

private:
    std::shared_ptr<Timer> _timer;
};

} // namespace

void reset()
{
    auto& machine = Machine::shared();
    const std::lock_guard lock(machine.mutex);
    machine.now = start;
    machine.zone = "UTC";
    for (const auto& watch : machine.watches)
        watch->isStopped = true;
    for (const auto& timer : machine.timers)
        timer->isStopped = true;
    machine.watches.clear();
    machine.timers.clear();
}

void advance(nanoseconds time)
{
    auto& machine = Machine::shared();
    const std::lock_guard lock(machine.mutex);
    machine.now = {machine.now.sinceEpoch + time, machine.now.sinceBoot + time, machine.now.awake + time};
    machine.fireTimers();
}

void sleep(nanoseconds time)
{
    auto& machine = Machine::shared();
    const std::lock_guard lock(machine.mutex);
    machine.tell(ClockEvent::WillSleep);
    machine.now.sinceEpoch += time;
    machine.now.sinceBoot += time;
    machine.tell(ClockEvent::DidWake);
    machine.fireTimers();
}

void setClockBy(nanoseconds amount)
{
    auto& machine = Machine::shared();
    const std::lock_guard lock(machine.mutex);
    machine.now.sinceEpoch += amount;
    machine.tell(ClockEvent::Set);
    machine.fireTimers();
}

void setZone(const std::string& name)
{
    auto& machine = Machine::shared();
    const std::lock_guard lock(machine.mutex);
    if (machine.zone == name)
        return;
    machine.zone = name;
    machine.tell(ClockEvent::ZoneChanged);
}

} // namespace scripted::clock

namespace platform {

using scripted::clock::Machine;

ClockReading readClocks()
{
    const std::lock_guard lock(Machine::shared().mutex);
    return Machine::shared().now;
}

std::string timeZoneName()
{
    const std::lock_guard lock(Machine::shared().mutex);
    return Machine::shared().zone;
}

std::unique_ptr<ClockWatch> ClockWatch::create(std::shared_ptr<Queue> queue, std::function<void(ClockEvent)> handler)
{
    return std::make_unique<scripted::clock::ScriptedWatch>(
        std::make_shared<scripted::clock::Watch>(std::move(queue), std::move(handler)));
}

std::unique_ptr<ClockTimer> ClockTimer::create(Clock clock, std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<scripted::clock::ScriptedTimer>(
        std::make_shared<scripted::clock::Timer>(clock, std::move(queue), std::move(handler), std::nullopt));
}

} // namespace platform
