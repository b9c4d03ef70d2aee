#include "diagnostics/console/LogTimestamp.h"

#include <chrono>
#include <cstddef>

namespace {

// The digits there; -1 when others are among them.
int numberAt(std::string_view text, std::size_t place, std::size_t digits)
{
    int number = 0;
    for (const char digit : text.substr(place, digits)) {
        if (digit < '0' || digit > '9')
            return -1;
        number = 10 * number + (digit - '0');
    }
    return number;
}

bool isSeparator(char character)
{
    return character == '.' || character == '-';
}

} // namespace

std::optional<std::int64_t> secondsOfTimestamp(std::string_view timestamp)
{
    constexpr std::size_t length = 31; // "2026-11-20 09:56:22.123456+0100"
    constexpr std::size_t sign = 26;
    if (timestamp.size() != length || !isSeparator(timestamp[4]) || !isSeparator(timestamp[7]) || timestamp[10] != ' '
        || timestamp[13] != ':' || timestamp[16] != ':' || timestamp[19] != '.'
        || (timestamp[sign] != '+' && timestamp[sign] != '-'))
        return std::nullopt;
    const auto year = numberAt(timestamp, 0, 4);
    const auto month = numberAt(timestamp, 5, 2);
    const auto day = numberAt(timestamp, 8, 2);
    const auto hour = numberAt(timestamp, 11, 2);
    const auto minute = numberAt(timestamp, 14, 2);
    const auto second = numberAt(timestamp, 17, 2);
    const auto zoneHour = numberAt(timestamp, sign + 1, 2);
    const auto zoneMinute = numberAt(timestamp, sign + 3, 2);
    if (year < 1 || month < 1 || day < 1 || hour < 0 || hour > 23 || minute < 0 || minute > 59 || second < 0
        || second > 59 || numberAt(timestamp, 20, 6) < 0 || zoneHour < 0 || zoneHour > 23 || zoneMinute < 0
        || zoneMinute > 59)
        return std::nullopt;
    const std::chrono::year_month_day date(std::chrono::year(year), std::chrono::month(static_cast<unsigned>(month)),
                                           std::chrono::day(static_cast<unsigned>(day)));
    if (!date.ok())
        return std::nullopt;
    const std::int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
    const int zone = (zoneHour * 60 + zoneMinute) * 60;
    return days * 86400 + hour * 3600 + minute * 60 + second - (timestamp[sign] == '-' ? -zone : zone);
}
