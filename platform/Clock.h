#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace platform {

class Queue;

struct ClockReading {
    std::chrono::nanoseconds sinceEpoch; // the real clock: since 1970 in UTC; jumps when it is set
    std::chrono::nanoseconds sinceBoot;  // true time since the machine was started, sleep counted; never set
    std::chrono::nanoseconds awake;      // the same without the time asleep
};

ClockReading readClocks();

// The system's zone in the IANA database, such as "Europe/Berlin"; "UTC" when the system names none.
std::string timeZoneName();

enum class ClockEvent {
    Set,         // the real clock jumped, if only by a little
    WillSleep,   // the computer is about to fall asleep; not every system tells
    DidWake,     // it was asleep; may come twice
    ZoneChanged, // timeZoneName() has another answer
};

// Runs the handler on the serial queue for each event while it lives.
class ClockWatch {
public:
    static std::unique_ptr<ClockWatch> create(std::shared_ptr<Queue> queue, std::function<void(ClockEvent)> handler);
    virtual ~ClockWatch() = default;
};

// Runs the handler on the serial queue when a moment of a clock has come: at once when it is past, and on waking when
// it came in sleep. It wakes neither the computer nor, before the moment, the processor.
class ClockTimer {
public:
    enum class Clock {
        SinceEpoch, // looked at again when the clock is set
        SinceBoot,
    };

    static std::unique_ptr<ClockTimer> create(Clock clock, std::shared_ptr<Queue> queue, std::function<void()> handler);
    virtual ~ClockTimer() = default;

    // Replaces the moment; nothing for none. For the moment before, the handler may still run once if that has come.
    virtual void set(std::optional<std::chrono::nanoseconds> moment) = 0;
};

} // namespace platform
