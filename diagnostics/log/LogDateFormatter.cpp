#include "diagnostics/log/LogDateFormatter.h"

#include <cstdio>
#include <cstdlib>

void LogDateFormatter::format(std::time_t second)
{
    static constexpr const char* months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

    // localtime_r() by itself does not notice that the user has travelled.
    ::tzset();
    tm local{};
    ::localtime_r(&second, &local);
    long offset = std::labs(local.tm_gmtoff) / 60;
    int length = std::snprintf(_text, sizeof _text, "%d/%s/%02d, %02d:%02d:%02d%c%02ld%02ld", local.tm_mday,
                               months[local.tm_mon], local.tm_year % 100, local.tm_hour, local.tm_min, local.tm_sec,
                               local.tm_gmtoff < 0 ? '-' : '+', offset / 60, offset % 60);
    _length = static_cast<std::size_t>(length);
    _second = second;
}
