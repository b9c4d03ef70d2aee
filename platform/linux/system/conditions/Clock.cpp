#include "platform/Clock.h"

#include "platform/FileDescriptor.h"
#include "platform/Folder.h"
#include "platform/linux/system/conditions/ConditionsBus.h"
#include "platform/linux/system/conditions/LoginService.h"
#include "platform/linux/system/conditions/SystemFiles.h"
#include "platform/Queue.h"
#include "platform/QueueTelling.h"

#include <algorithm>
#include <climits>
#include <ctime>
#include <string_view>
#include <sys/inotify.h>
#include <sys/timerfd.h>
#include <unistd.h>

namespace platform {

namespace {

using std::chrono::nanoseconds;

constexpr std::int64_t second = 1'000'000'000;
constexpr const char* zoneFile = "/etc/localtime";

nanoseconds readClock(clockid_t clock)
{
    timespec now{};
    ::clock_gettime(clock, &now);
    return nanoseconds(now.tv_sec * second + now.tv_nsec);
}

itimerspec timerValue(nanoseconds moment)
{
    return {{0, 0}, {static_cast<time_t>(moment.count() / second), static_cast<long>(moment.count() % second)}};
}

bool setTimer(const FileDescriptor& timer, nanoseconds moment, int flags)
{
    const auto value = timerValue(moment);
    return ::timerfd_settime(timer.get(), TFD_TIMER_ABSTIME | flags, &value, nullptr) == 0;
}

FileDescriptor createTimer(clockid_t clock)
{
    return FileDescriptor(::timerfd_create(clock, TFD_CLOEXEC | TFD_NONBLOCK));
}

// Tells that the clock was set: a timer that never ends is cancelled then, and on waking too.
class ClockJumps {
public:
    explicit ClockJumps(std::function<void(ClockEvent)> tell) : _tell(std::move(tell))
    {
        arm();
        _source = ConditionsThread::shared().watchDescriptor(_timer.get(), [this] { didJump(); });
    }

private:
    static nanoseconds timeAsleep() { return readClock(CLOCK_BOOTTIME) - readClock(CLOCK_MONOTONIC); }

    void arm()
    {
        _asleep = timeAsleep();
        setTimer(_timer, nanoseconds(LLONG_MAX / second * second), TFD_TIMER_CANCEL_ON_SET);
    }

    void didJump()
    {
        std::uint64_t count = 0;
        [[maybe_unused]] const auto cancelled = ::read(_timer.get(), &count, sizeof count);
        constexpr std::chrono::milliseconds reading{10}; // the two clocks are read one after the other
        const bool didSleep = timeAsleep() - _asleep > reading;
        arm();
        _tell(didSleep ? ClockEvent::DidWake : ClockEvent::Set);
    }

    const std::function<void(ClockEvent)> _tell;
    FileDescriptor _timer = createTimer(CLOCK_REALTIME);
    nanoseconds _asleep{0}; // in all, when the timer was armed
    EventSource _source;
};

// The folder of the file that names the zone: the file is replaced when another one is chosen.
class ZoneChanges {
public:
    explicit ZoneChanges(std::function<void(ClockEvent)> tell)
        : _tell(std::move(tell)),
          _service("org.freedesktop.timedate1", {propertiesChanged("/org/freedesktop/timedate1")}, [this] {
              look();
              _service.finishReading();
          })
    {
        const auto path = machinePath(zoneFile);
        constexpr std::uint32_t mask = IN_CREATE | IN_MOVED_TO | IN_CLOSE_WRITE | IN_DELETE;
        _source = ConditionsThread::shared().watchFile(parentOf(path), mask, [this](const inotify_event& event) {
            const std::string_view name = event.len > 0 ? event.name : "";
            if (name == "localtime" || name == "timezone")
                look();
        });
        _service.follow();
    }

private:
    void look()
    {
        auto zone = timeZoneName();
        if (zone == _zone)
            return;
        _zone = std::move(zone);
        _tell(ClockEvent::ZoneChanged);
    }

    const std::function<void(ClockEvent)> _tell;
    std::string _zone = timeZoneName();
    EventSource _source;
    BusService _service; // only its signals count
};

class SleepChanges {
public:
    explicit SleepChanges(std::function<void(ClockEvent)> tell)
        : _service(
              LoginService::Name,
              {"path='/org/freedesktop/login1',interface='org.freedesktop.login1.Manager',member='PrepareForSleep'"},
              [this] { _service.finishReading(); },
              [tell = std::move(tell)](sd_bus_message* signal) {
                  int begins = 0;
                  if (sd_bus_message_is_signal(signal, LoginService::Manager, "PrepareForSleep") > 0
                      && sd_bus_message_read(signal, "b", &begins) > 0)
                      tell(begins ? ClockEvent::WillSleep : ClockEvent::DidWake);
              })
    {
        _service.follow();
    }

private:
    BusService _service;
};

class LinuxClockWatch final : public ClockWatch {
public:
    LinuxClockWatch(std::shared_ptr<Queue> queue, std::function<void(ClockEvent)> handler)
        : _telling(std::move(queue), std::move(handler))
    {
        ConditionsThread::shared().sync([this] {
            const auto tell = [this](ClockEvent event) { _telling.tell(event); };
            _jumps = std::make_unique<ClockJumps>(tell);
            _zones = std::make_unique<ZoneChanges>(tell);
            _sleep = std::make_unique<SleepChanges>(tell);
        });
    }

    ~LinuxClockWatch() override
    {
        ConditionsThread::shared().sync([this] {
            _jumps.reset();
            _zones.reset();
            _sleep.reset();
        });
    }

private:
    QueueTelling<ClockEvent> _telling;
    std::unique_ptr<ClockJumps> _jumps;
    std::unique_ptr<ZoneChanges> _zones;
    std::unique_ptr<SleepChanges> _sleep;
};

class LinuxClockTimer final : public ClockTimer {
public:
    LinuxClockTimer(Clock clock, std::shared_ptr<Queue> queue, std::function<void()> handler)
        : _telling(std::move(queue), std::move(handler)),
          _timer(createTimer(clock == Clock::SinceEpoch ? CLOCK_REALTIME : CLOCK_BOOTTIME))
    {
        auto& thread = ConditionsThread::shared();
        thread.sync([&] { _source = thread.watchDescriptor(_timer.get(), [this] { didFire(); }); });
    }

    ~LinuxClockTimer() override
    {
        ConditionsThread::shared().sync([this] { _source.reset(); });
    }

    void set(std::optional<nanoseconds> moment) override
    {
        // Zero would stop it.
        setTimer(_timer, moment ? std::max(*moment, nanoseconds(1)) : nanoseconds(0), 0);
    }

private:
    void didFire() const
    {
        std::uint64_t count = 0;
        if (::read(_timer.get(), &count, sizeof count) == sizeof count)
            _telling.tell();
    }

    QueueTelling<> _telling;
    FileDescriptor _timer;
    EventSource _source;
};

} // namespace

ClockReading readClocks()
{
    const auto awake = readClock(CLOCK_MONOTONIC); // first, since it is never the later one
    return {.sinceEpoch = readClock(CLOCK_REALTIME), .sinceBoot = readClock(CLOCK_BOOTTIME), .awake = awake};
}

std::string timeZoneName()
{
    constexpr std::string_view folder = "/zoneinfo/";
    char target[PATH_MAX];
    const auto path = machinePath(zoneFile);
    const auto length = ::readlink(path.c_str(), target, sizeof target);
    const std::string_view linked(target, static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    if (const auto found = linked.rfind(folder); found != std::string_view::npos)
        return std::string(linked.substr(found + folder.size()));
    const auto name = firstLine(parentOf(path) + "/timezone");
    return name.empty() ? "UTC" : name;
}

std::unique_ptr<ClockWatch> ClockWatch::create(std::shared_ptr<Queue> queue, std::function<void(ClockEvent)> handler)
{
    return std::make_unique<LinuxClockWatch>(std::move(queue), std::move(handler));
}

std::unique_ptr<ClockTimer> ClockTimer::create(Clock clock, std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<LinuxClockTimer>(clock, std::move(queue), std::move(handler));
}

} // namespace platform
