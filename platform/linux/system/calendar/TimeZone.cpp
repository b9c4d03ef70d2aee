#include "platform/TimeZone.h"

#include <algorithm>
#include <cctz/time_zone.h>
#include <chrono>

// The rules are the system's own, below /usr/share/zoneinfo, so that what is decided agrees with every other clock of
// the machine.
namespace platform {

namespace {

using Seconds = std::chrono::duration<std::int64_t>;
using Point = cctz::time_point<cctz::seconds>;

// The calendar, and with it each zone's last rule, repeats after this many seconds; the library tells changes only for
// the first round after the last one that its file names.
constexpr std::int64_t fourHundredYears = 12'622'780'800;
constexpr std::int64_t year2400 = 13'569'465'600;

std::int64_t roundsBefore(std::int64_t instant)
{
    return instant < year2400 ? 0 : (instant - year2400) / fourHundredYears + 1;
}

Point pointOf(std::int64_t instant)
{
    return Point(Seconds(instant));
}

std::int64_t instantOf(const Point& point)
{
    return point.time_since_epoch().count();
}

// Names of the library's own and paths are none of IANA's, nor are the zones that count leap seconds.
bool isForeignName(std::string_view name)
{
    return name.empty() || name.size() > 200 || name.front() == '/' || name.front() == ':' || name.starts_with("Fixed/")
        || name.starts_with("file:") || name.starts_with("right/") || name.starts_with("posix/") || name == "localtime"
        || name == "posixrules" || name == "Factory" || name.find("..") != std::string_view::npos
        || name.find('\0') != std::string_view::npos;
}

} // namespace

struct TimeZone::Native {
    cctz::time_zone zone;

    int offset(std::int64_t instant) const { return zone.lookup(pointOf(instant)).offset; }
    Transition transitionAt(std::int64_t instant) const { return {instant, offset(instant - 1), offset(instant)}; }
};

TimeZone::TimeZone(std::string name, std::shared_ptr<const Native> native)
    : _name(std::move(name)),
      _native(std::move(native))
{
}

std::optional<TimeZone> TimeZone::named(std::string_view name)
{
    cctz::time_zone zone;
    if (isForeignName(name) || !cctz::load_time_zone(std::string(name), &zone))
        return std::nullopt;
    return TimeZone(std::string(name), std::make_shared<const Native>(zone));
}

int TimeZone::offsetAt(std::int64_t instant) const
{
    return _native->offset(instant);
}

std::optional<TimeZone::Transition> TimeZone::nextTransition(std::int64_t instant) const
{
    // A change of the name or of the kind of time alone is none.
    const std::int64_t shift = roundsBefore(instant) * fourHundredYears;
    std::int64_t from = instant - shift;
    cctz::time_zone::civil_transition found;
    while (_native->zone.next_transition(pointOf(from), &found)) {
        const auto at = instantOf(_native->zone.lookup(found.to).trans);
        if (at <= from)
            break;
        from = at;
        auto transition = _native->transitionAt(from);
        transition.at += shift;
        if (transition.offsetBefore != transition.offsetAfter)
            return transition;
    }
    return std::nullopt;
}

std::optional<TimeZone::Transition> TimeZone::lastTransition(std::int64_t instant) const
{
    const std::int64_t shift = roundsBefore(instant) * fourHundredYears;
    std::int64_t before = instant - shift + 1;
    cctz::time_zone::civil_transition found;
    while (_native->zone.prev_transition(pointOf(before), &found)) {
        const auto at = instantOf(_native->zone.lookup(found.to).trans);
        if (at >= before)
            break;
        before = at;
        auto transition = _native->transitionAt(before);
        transition.at += shift;
        if (transition.offsetBefore != transition.offsetAfter)
            return transition;
    }
    return std::nullopt;
}

} // namespace platform
