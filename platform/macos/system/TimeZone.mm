#include "platform/TimeZone.h"

#include "platform/macos/system/Foundation.h"

#include <algorithm>
#include <unistd.h>

namespace platform {

namespace {

// The system tells only the changes of daylight saving time, so offsets are compared, from week to week. No zone has
// changed twice within one and been back.
constexpr std::int64_t step = 7 * 86'400;
constexpr std::int64_t farthest = 50 * 366 * 86'400LL; // nobody knows the rules of a later time
constexpr std::int64_t firstZones = -3'786'825'600;    // 1850: before it every place had its own time

// The system also makes zones of abbreviations and of offsets. Only IANA's names have a file.
bool hasFile(std::string_view name)
{
    if (name.empty() || name.front() == '/' || name.find("..") != std::string_view::npos)
        return false;
    return ::access(("/usr/share/zoneinfo/" + std::string(name)).c_str(), R_OK) == 0;
}

} // namespace

struct TimeZone::Native {
    NSTimeZone* zone;

    int offsetAt(std::int64_t instant) const
    {
        @autoreleasepool {
            NSDate* const date = [NSDate dateWithTimeIntervalSince1970:static_cast<double>(instant)];
            return static_cast<int>([zone secondsFromGMTForDate:date]);
        }
    }

    // The only change after one instant and at or before another.
    Transition changeBetween(std::int64_t before, std::int64_t after) const
    {
        const int offsetBefore = offsetAt(before);
        while (after - before > 1) {
            const std::int64_t middle = before + (after - before) / 2;
            (offsetAt(middle) == offsetBefore ? before : after) = middle;
        }
        return {after, offsetBefore, offsetAt(after)};
    }
};

TimeZone::TimeZone(std::string name, std::shared_ptr<const Native> native)
    : _name(std::move(name)),
      _native(std::move(native))
{
}

std::optional<TimeZone> TimeZone::named(std::string_view name)
{
    if (!hasFile(name))
        return std::nullopt;
    @autoreleasepool {
        NSTimeZone* const zone = [NSTimeZone timeZoneWithName:foundation::string(name)];
        if (!zone)
            return std::nullopt;
        return TimeZone(std::string(name), std::make_shared<const Native>(Native{zone}));
    }
}

int TimeZone::offsetAt(std::int64_t instant) const
{
    return _native->offsetAt(instant);
}

std::optional<TimeZone::Transition> TimeZone::nextTransition(std::int64_t instant) const
{
    std::int64_t from = std::max(instant, firstZones);
    const std::int64_t until = from + farthest;
    for (const int offset = _native->offsetAt(from); from < until; from += step) {
        if (_native->offsetAt(from + step) != offset)
            return _native->changeBetween(from, from + step);
    }
    return std::nullopt;
}

std::optional<TimeZone::Transition> TimeZone::lastTransition(std::int64_t instant) const
{
    for (const int offset = _native->offsetAt(instant); instant > firstZones; instant -= step) {
        if (_native->offsetAt(instant - step) != offset)
            return _native->changeBetween(instant - step, instant);
    }
    return std::nullopt;
}

} // namespace platform
