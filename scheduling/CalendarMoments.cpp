#include "scheduling/CalendarMoments.h"

#include "protocol/ScheduleRanges.h"

#include <algorithm>
#include <array>
#include <chrono>

namespace scheduling {

namespace {

constexpr int minutesPerDay = 24 * 60;
constexpr unsigned everyDay = 0; // in place of a weekday (1 to 7) or a day of the month (1 to 31)
// Every weekday falls on every day of the month within less than this.
constexpr LocalDay longestWait = 8 * 366;

constexpr std::uint32_t kindOfDay(unsigned weekday, unsigned dayOfMonth)
{
    return weekday * 32 + dayOfMonth;
}

// The four kinds of entries that match a day.
std::array<std::uint32_t, 4> kindsOf(LocalDay day)
{
    const std::chrono::sys_days date{std::chrono::days(day)};
    const unsigned weekday = std::chrono::weekday(date).iso_encoding();
    const auto dayOfMonth = static_cast<unsigned>(std::chrono::year_month_day(date).day());
    return {kindOfDay(everyDay, everyDay), kindOfDay(weekday, everyDay), kindOfDay(everyDay, dayOfMonth),
            kindOfDay(weekday, dayOfMonth)};
}

bool isUsable(const CalendarEntry& entry)
{
    const auto inRange = [](const std::optional<std::int64_t>& value, const ScheduleRange& range) {
        return !value || range.contains(*value);
    };
    return entry.wellTyped && (entry.weekday || entry.day || entry.hour)
        && inRange(entry.weekday, ScheduleRanges::weekday) && inRange(entry.day, ScheduleRanges::day)
        && inRange(entry.hour, ScheduleRanges::hour) && inRange(entry.minute, ScheduleRanges::minute);
}

std::uint32_t timeOf(const CalendarEntry& entry)
{
    const std::int64_t weekday = entry.weekday ? (*entry.weekday == 0 ? 7 : *entry.weekday) : everyDay;
    const std::int64_t dayOfMonth = entry.day.value_or(everyDay);
    const std::int64_t minute = entry.hour.value_or(0) * 60 + entry.minute.value_or(0);
    return kindOfDay(static_cast<unsigned>(weekday), static_cast<unsigned>(dayOfMonth)) * minutesPerDay
        + static_cast<std::uint32_t>(minute);
}

LocalTime localOf(LocalDay day, int minute)
{
    return day * secondsPerDay + minute * secondsPerMinute;
}

} // namespace

CalendarMoments::CalendarMoments(const std::vector<CalendarEntry>& entries)
{
    _times.reserve(entries.size());
    for (const CalendarEntry& entry : entries) {
        if (isUsable(entry))
            _times.push_back(timeOf(entry));
    }
    std::sort(_times.begin(), _times.end());
    _times.erase(std::unique(_times.begin(), _times.end()), _times.end());
}

std::optional<int> CalendarMoments::firstMinute(LocalDay day, int from) const
{
    std::optional<int> first;
    for (const std::uint32_t kind : kindsOf(day)) {
        const std::uint32_t begin = kind * minutesPerDay;
        const auto found = std::lower_bound(_times.begin(), _times.end(), begin + static_cast<std::uint32_t>(from));
        if (found == _times.end() || *found >= begin + minutesPerDay)
            continue;
        const int minute = static_cast<int>(*found - begin);
        first = first ? std::min(*first, minute) : minute;
    }
    return first;
}

std::optional<int> CalendarMoments::lastMinute(LocalDay day, int until) const
{
    std::optional<int> last;
    for (const std::uint32_t kind : kindsOf(day)) {
        const std::uint32_t begin = kind * minutesPerDay;
        const auto after = std::upper_bound(_times.begin(), _times.end(), begin + static_cast<std::uint32_t>(until));
        if (after == _times.begin() || *(after - 1) < begin)
            continue;
        const int minute = static_cast<int>(*(after - 1) - begin);
        last = last ? std::max(*last, minute) : minute;
    }
    return last;
}

std::optional<CalendarMoments::Moment> CalendarMoments::next(const LocalClock& clock, Instant after) const
{
    if (_times.empty())
        return std::nullopt;
    const LocalTime shown = clock.latestShown(after);
    const LocalDay today = dayOf(shown);
    int from = static_cast<int>(timeOfDayOf(shown) / secondsPerMinute) + 1;
    for (LocalDay day = today; day <= today + longestWait; ++day, from = 0) {
        if (const auto minute = from < minutesPerDay ? firstMinute(day, from) : std::nullopt) {
            const LocalTime local = localOf(day, *minute);
            return Moment{clock.instantOf(local), local};
        }
    }
    return std::nullopt;
}

std::optional<CalendarMoments::Moment> CalendarMoments::last(const LocalClock& clock, Instant until,
                                                             Instant after) const
{
    if (_times.empty() || until <= after)
        return std::nullopt;
    const LocalTime shown = clock.latestShown(until);
    const LocalDay today = dayOf(shown);
    int latest = static_cast<int>(timeOfDayOf(shown) / secondsPerMinute);
    for (LocalDay day = today; day >= today - longestWait; --day, latest = minutesPerDay - 1) {
        if (const auto minute = lastMinute(day, latest)) {
            const LocalTime local = localOf(day, *minute);
            const Instant at = clock.instantOf(local);
            return at > after ? std::optional(Moment{at, local}) : std::nullopt;
        }
    }
    return std::nullopt;
}

std::vector<int> CalendarMoments::minutesOfDay() const
{
    std::vector<int> minutes;
    minutes.reserve(_times.size());
    for (const std::uint32_t time : _times)
        minutes.push_back(static_cast<int>(time % minutesPerDay));
    std::sort(minutes.begin(), minutes.end());
    minutes.erase(std::unique(minutes.begin(), minutes.end()), minutes.end());
    return minutes;
}

} // namespace scheduling
