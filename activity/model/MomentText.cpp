#include "activity/model/MomentText.h"

#include "activity/model/Filled.h"
#include "platform/Localization.h"

#include <algorithm>
#include <array>

using platform::DateFormat;
using platform::DateStyle;
using platform::localizedString;
using scheduling::Instant;
using scheduling::LocalDay;

namespace {

constexpr std::array<const char*, 7> weekdays{"Monday", "Tuesday",  "Wednesday", "Thursday",
                                              "Friday", "Saturday", "Sunday"};
constexpr LocalDay dayOfFirstMonday = 4; // 1970-01-05
constexpr LocalDay daysPerWeek = 7;

platform::TimeZone zoneNamed(const std::string& name)
{
    auto zone = platform::TimeZone::named(name);
    return zone ? std::move(*zone) : platform::TimeZone::named("UTC").value();
}

DateFormat formatIn(const platform::TimeZone& zone, DateStyle date)
{
    auto format = DateFormat::withStyles(date, DateStyle::Short);
    format.setTimeZone(zone.name());
    return format;
}

const char* weekdayOf(LocalDay day)
{
    const auto index = ((day - dayOfFirstMonday) % daysPerWeek + daysPerWeek) % daysPerWeek;
    return weekdays[static_cast<std::size_t>(index)];
}

std::string counted(std::int64_t count, const char* one, const char* many)
{
    return filled(localizedString("%@ %@"), {std::to_string(count), localizedString(count == 1 ? one : many)});
}

} // namespace

MomentText::MomentText(const std::string& zone, Instant now)
    : _clock(zoneNamed(zone)),
      _today(_clock.dayAt(now)),
      _time(formatIn(_clock.zone(), DateStyle::None)),
      _dateAndTime(formatIn(_clock.zone(), DateStyle::Medium))
{
}

std::string MomentText::text(Instant moment)
{
    const auto days = _clock.dayAt(moment) - _today;
    if (days < -1 || days >= daysPerWeek)
        return _dateAndTime.stringFromDate(static_cast<double>(moment));
    const auto time = _time.stringFromDate(static_cast<double>(moment));
    if (days == -1)
        return filled(localizedString("Yesterday, %@"), {time});
    if (days == 0)
        return filled(localizedString("Today, %@"), {time});
    if (days == 1)
        return filled(localizedString("Tomorrow, %@"), {time});
    return filled(localizedString("%@, %@"), {localizedString(weekdayOf(_today + days)), time});
}

std::string MomentText::textOnDayOf(Instant moment, Instant day)
{
    auto& format = _clock.dayAt(moment) == _clock.dayAt(day) ? _time : _dateAndTime;
    return format.stringFromDate(static_cast<double>(moment));
}

std::string MomentText::length(std::int64_t seconds)
{
    seconds = std::max<std::int64_t>(seconds, 0);
    const auto minutes = seconds / scheduling::secondsPerMinute;
    if (minutes == 0)
        return counted(seconds, "second", "seconds");
    const auto hours = seconds / scheduling::secondsPerHour;
    if (hours == 0)
        return counted(minutes, "minute", "minutes");
    const auto rest = minutes - hours * (scheduling::secondsPerHour / scheduling::secondsPerMinute);
    const auto whole = counted(hours, "hour", "hours");
    return rest == 0 ? whole : filled(localizedString("%@ %@"), {whole, counted(rest, "minute", "minutes")});
}

Instant MomentText::midnight() const
{
    return _clock.instantOf((_today + 1) * scheduling::secondsPerDay);
}
