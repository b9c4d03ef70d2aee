#include "scheduling/LocalClock.h"

#include <algorithm>
#include <limits>

namespace scheduling {

namespace {

constexpr Instant always = std::numeric_limits<Instant>::max();
constexpr std::int64_t largestOffset = secondsPerDay;
constexpr std::int64_t largestOverlap = 2 * secondsPerDay;
// Beyond this distance the stretches between are not worth asking for.
constexpr std::int64_t nearby = 3 * 366 * secondsPerDay;
constexpr std::size_t mostStretches = 2'000;

} // namespace

std::size_t LocalClock::indexAt(Instant instant) const
{
    const auto holds = [&](const Stretch& stretch) { return stretch.begin <= instant && instant < stretch.end; };
    if (_latest < _stretches.size() && holds(_stretches[_latest]))
        return _latest;
    const bool isFar = _stretches.empty() || _stretches.size() > mostStretches
        || (instant >= _stretches.back().end && instant - _stretches.back().end > nearby)
        || (instant < _stretches.front().begin && _stretches.front().begin - instant > nearby);
    if (isFar) {
        const auto last = _zone.lastTransition(instant);
        _stretches.assign(1, stretchFrom(last ? last->at : -always));
    }
    while (instant >= _stretches.back().end)
        _stretches.push_back(stretchFrom(_stretches.back().end));
    while (instant < _stretches.front().begin) {
        const auto last = _zone.lastTransition(_stretches.front().begin - 1);
        _stretches.insert(_stretches.begin(), stretchFrom(last ? last->at : -always));
    }
    const auto after = std::upper_bound(_stretches.begin(), _stretches.end(), instant,
                                        [](Instant at, const Stretch& stretch) { return at < stretch.begin; });
    _latest = static_cast<std::size_t>(after - _stretches.begin()) - 1;
    return _latest;
}

LocalClock::Stretch LocalClock::stretchFrom(Instant begin) const
{
    const Instant asked = std::max(begin, earliestInstant);
    const auto next = _zone.nextTransition(asked);
    return {begin, next ? next->at : always, _zone.offsetAt(asked)};
}

Instant LocalClock::instantOf(LocalTime local) const
{
    // No earlier instant shows this time or a later one.
    Instant candidate = local - largestOffset;
    for (;;) {
        const Stretch& stretch = stretchAt(candidate);
        const Instant found = std::max(stretch.begin, local - stretch.offset);
        if (found < stretch.end)
            return found;
        candidate = stretch.end;
    }
}

LocalTime LocalClock::latestShown(Instant instant) const
{
    LocalTime latest = localAt(instant);
    for (Instant begin = stretchAt(instant).begin; begin > instant - largestOverlap;) {
        const Stretch& before = stretchAt(begin - 1);
        latest = std::max(latest, begin - 1 + before.offset);
        begin = before.begin;
    }
    return latest;
}

bool LocalClock::isRepeatedAt(Instant instant) const
{
    const LocalTime local = localAt(instant);
    const Instant first = instantOf(local);
    if (first != instant)
        return localAt(first) == local;
    for (auto change = nextChange(instant); change && *change <= instant + largestOverlap;
         change = nextChange(*change)) {
        if (localAt(*change) <= local)
            return true;
    }
    return false;
}

std::optional<Instant> LocalClock::nextChange(Instant instant) const
{
    const Instant end = stretchAt(instant).end;
    return end == always ? std::nullopt : std::optional(end);
}

} // namespace scheduling
