#pragma once

#include <chrono>
#include <string>

// Clocks that stand still between calls. Timers fire, on their queues, in the calls that bring their moments.
namespace scripted::clock {

void reset(); // 2026-01-01 00:00:00 UTC, 1000 s after boot, "UTC"

void advance(std::chrono::nanoseconds time);      // awake
void sleep(std::chrono::nanoseconds time);        // falls asleep, and wakes after that time
void setClockBy(std::chrono::nanoseconds amount); // of either sign
void setZone(const std::string& name);

} // namespace scripted::clock
