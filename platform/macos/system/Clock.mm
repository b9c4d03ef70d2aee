#include "platform/Clock.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/system/MachineEvents.h"
#include "platform/QueueTelling.h"

#import <IOKit/IOMessage.h>
#import <IOKit/pwr_mgt/IOPMLib.h>
#include <mach/mach_time.h>
#include <mutex>
#include <sys/sysctl.h>
#include <sys/time.h>

namespace platform {

namespace {

using std::chrono::nanoseconds;

nanoseconds timeOf(const timeval& time)
{
    return std::chrono::seconds(time.tv_sec) + std::chrono::microseconds(time.tv_usec);
}

nanoseconds realTime()
{
    timeval now{};
    ::gettimeofday(&now, nullptr);
    return timeOf(now);
}

// The system moves the moment of the start by as much as the clock when that is set.
nanoseconds bootTime()
{
    timeval start{};
    size_t size = sizeof start;
    int name[] = {CTL_KERN, KERN_BOOTTIME};
    ::sysctl(name, 2, &start, &size, nullptr, 0);
    return timeOf(start);
}

nanoseconds awakeTime()
{
    mach_timebase_info_data_t base{};
    mach_timebase_info(&base);
    const auto ticks = static_cast<__uint128_t>(mach_absolute_time());
    return nanoseconds(static_cast<std::int64_t>(ticks * base.numer / base.denom));
}

// The sleep of the whole system, and its end.
class SleepEvents {
public:
    explicit SleepEvents(std::function<void(ClockEvent)> tell) : _tell(std::move(tell))
    {
        _connection = IORegisterForSystemPower(this, &_port, &SleepEvents::received, &_notifier);
        if (_connection != MACH_PORT_NULL)
            IONotificationPortSetDispatchQueue(_port, machineEventsQueue());
    }
    ~SleepEvents()
    {
        if (_connection == MACH_PORT_NULL)
            return;
        IODeregisterForSystemPower(&_notifier);
        IOServiceClose(_connection);
        IONotificationPortDestroy(_port);
        dispatch_sync(machineEventsQueue(), ^{}); // what was under way has ended
    }
    SleepEvents(const SleepEvents&) = delete;
    SleepEvents& operator=(const SleepEvents&) = delete;

private:
    static void received(void* context, io_service_t, natural_t type, void* argument)
    {
        const auto& events = *static_cast<SleepEvents*>(context);
        if (type == kIOMessageCanSystemSleep)
            IOAllowPowerChange(events._connection, reinterpret_cast<intptr_t>(argument));
        if (type == kIOMessageSystemWillSleep) {
            events._tell(ClockEvent::WillSleep);
            IOAllowPowerChange(events._connection, reinterpret_cast<intptr_t>(argument));
        }
        if (type == kIOMessageSystemHasPoweredOn)
            events._tell(ClockEvent::DidWake);
    }

    const std::function<void(ClockEvent)> _tell;
    IONotificationPortRef _port = nullptr;
    io_object_t _notifier = IO_OBJECT_NULL;
    io_connect_t _connection = MACH_PORT_NULL;
};

class MacClockWatch final : public ClockWatch {
public:
    MacClockWatch(std::shared_ptr<Queue> queue, std::function<void(ClockEvent)> handler)
        : _telling(std::make_shared<QueueTelling<ClockEvent>>(std::move(queue), std::move(handler))),
          _set("com.apple.system.clock_set", [telling = _telling] { telling->tell(ClockEvent::Set); }),
          _zone("com.apple.system.timezone",
                [telling = _telling, known = std::make_shared<std::string>(timeZoneName())] {
                    if (auto name = timeZoneName(); name != *known) {
                        *known = std::move(name);
                        telling->tell(ClockEvent::ZoneChanged);
                    }
                }),
          _sleep([telling = _telling](ClockEvent event) { telling->tell(event); })
    {
    }

private:
    std::shared_ptr<QueueTelling<ClockEvent>> _telling;
    NotifyRegistration _set;
    NotifyRegistration _zone;
    SleepEvents _sleep;
};

// Timers of the real clock look again themselves when it is set; they also run on in sleep. A moment since boot is one
// of the real clock until that is set.
class MacClockTimer final : public ClockTimer {
public:
    MacClockTimer(Clock clock, std::shared_ptr<Queue> queue, std::function<void()> handler)
        : _state(std::make_shared<State>(clock, std::move(queue), std::move(handler))),
          _set("com.apple.system.clock_set", [state = _state] { state->arm(); })
    {
    }
    ~MacClockTimer() override { _state->cancel(); }

    void set(std::optional<nanoseconds> moment) override { _state->set(moment); }

private:
    struct State : std::enable_shared_from_this<State> {
        State(Clock timerClock, std::shared_ptr<Queue> queue, std::function<void()> handler)
            : clock(timerClock),
              telling(std::move(queue), std::move(handler))
        {
        }

        void set(std::optional<nanoseconds> wanted)
        {
            {
                const std::lock_guard lock(mutex);
                moment = wanted;
            }
            arm();
        }
        void arm()
        {
            const std::lock_guard lock(mutex);
            if (timer)
                dispatch_source_cancel(timer);
            timer = nullptr;
            if (!moment)
                return;
            const auto real = clock == Clock::SinceEpoch ? *moment : *moment + bootTime();
            const auto seconds = std::chrono::floor<std::chrono::seconds>(real);
            const timespec at{static_cast<time_t>(seconds.count()), static_cast<long>((real - seconds).count())};
            timer = dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, machineEventsQueue());
            dispatch_source_set_timer(timer, dispatch_walltime(&at, 0), DISPATCH_TIME_FOREVER, 0);
            const std::weak_ptr<State> weak = weak_from_this();
            dispatch_source_set_event_handler(timer, ^{
                if (const auto state = weak.lock())
                    state->fire();
            });
            dispatch_resume(timer);
        }
        void fire()
        {
            if (hasCome())
                telling.tell();
            else
                arm(); // the moment of the start was moved a little meanwhile
        }
        bool hasCome()
        {
            const std::lock_guard lock(mutex);
            const auto now = clock == Clock::SinceEpoch ? readClocks().sinceEpoch : readClocks().sinceBoot;
            if (!moment || now < *moment)
                return false;
            moment.reset();
            return true;
        }
        void cancel() { set(std::nullopt); }

        const Clock clock;
        QueueTelling<> telling;
        std::mutex mutex;
        std::optional<nanoseconds> moment;
        dispatch_source_t timer = nullptr;
    };
    std::shared_ptr<State> _state;
    NotifyRegistration _set;
};

} // namespace

ClockReading readClocks()
{
    const auto awake = awakeTime();
    const auto now = realTime();
    return {.sinceEpoch = now, .sinceBoot = now - bootTime(), .awake = awake};
}

std::string timeZoneName()
{
    @autoreleasepool {
        [NSTimeZone resetSystemTimeZone];
        return foundation::string(NSTimeZone.systemTimeZone.name);
    }
}

std::unique_ptr<ClockWatch> ClockWatch::create(std::shared_ptr<Queue> queue, std::function<void(ClockEvent)> handler)
{
    return std::make_unique<MacClockWatch>(std::move(queue), std::move(handler));
}

std::unique_ptr<ClockTimer> ClockTimer::create(Clock clock, std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<MacClockTimer>(clock, std::move(queue), std::move(handler));
}

} // namespace platform
