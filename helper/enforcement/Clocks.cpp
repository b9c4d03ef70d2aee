#include "helper/enforcement/Clocks.h"

#include "platform/Clock.h"

namespace helper {

using std::chrono::nanoseconds;

namespace {

// Less than this is no setting of the clock, but that the clocks are read one after the other.
constexpr std::chrono::milliseconds smallestStep{100};
constexpr std::chrono::seconds shortestSleep{1};

std::int64_t wholeSeconds(nanoseconds time)
{
    return std::chrono::floor<std::chrono::seconds>(time).count();
}

} // namespace

Clocks::Clocks()
{
    const auto reading = platform::readClocks();
    _offset = reading.sinceEpoch - reading.sinceBoot;
    _asleep = reading.sinceBoot - reading.awake;
}

Clocks::Reading Clocks::read()
{
    const auto reading = platform::readClocks();
    Reading result;
    const auto asleep = reading.sinceBoot - reading.awake;
    result.slept = asleep - _asleep > shortestSleep;
    _asleep = asleep;
    const auto offset = reading.sinceEpoch - reading.sinceBoot;
    if (std::chrono::abs(offset - _offset) > smallestStep) {
        result.before = wholeSeconds(reading.sinceBoot + _offset);
        _offset = offset;
    }
    const auto clock = wholeSeconds(reading.sinceEpoch);
    result.now = {clock, clock - offsetSeconds()};
    return result;
}

std::int64_t Clocks::elapsedAt(nanoseconds sinceBoot) const
{
    return wholeSeconds(sinceBoot + _offset) - offsetSeconds();
}

std::int64_t Clocks::offsetSeconds() const
{
    return wholeSeconds(_offset);
}

} // namespace helper
