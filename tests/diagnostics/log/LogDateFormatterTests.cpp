#include "diagnostics/log/LogDateFormatter.h"
#include "tests/support/EnvironmentVariable.h"

#include <ctime>
#include <doctest/doctest.h>
#include <string>

namespace {

// POSIX rules, so that the tests need no zone files.
constexpr const char* centralEurope = "CET-1CEST,M3.5.0,M10.5.0/3";

std::time_t utc(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    tm parts{};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    return ::timegm(&parts);
}

std::string textIn(const char* zone, std::time_t second)
{
    EnvironmentVariable here("TZ", zone);
    return std::string(LogDateFormatter().text(second));
}

} // namespace

TEST_CASE("a date is printed with day, English month, two-digit year, time and zone")
{
    CHECK(textIn(centralEurope, utc(2026, 11, 15, 0, 16, 4)) == "15/Nov/26, 01:16:04+0100");
    CHECK(textIn("UTC0", utc(2026, 11, 15, 0, 16, 4)) == "15/Nov/26, 00:16:04+0000");
}

TEST_CASE("the day has no leading zero and the year always has two digits")
{
    CHECK(textIn("UTC0", utc(2005, 3, 1, 9, 8, 7)) == "1/Mar/05, 09:08:07+0000");
    CHECK(textIn("UTC0", utc(2000, 12, 31, 23, 59, 59)) == "31/Dec/00, 23:59:59+0000");
}

TEST_CASE("every month has its English name whatever the environment's language")
{
    const char* names[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    for (int month = 1; month <= 12; ++month)
        CHECK(textIn("UTC0", utc(2026, month, 9)) == "9/" + std::string(names[month - 1]) + "/26, 00:00:00+0000");
}

TEST_CASE("zones with half hours and those west of Greenwich are printed with their sign and minutes")
{
    CHECK(textIn("IST-5:30", utc(2026, 1, 1)) == "1/Jan/26, 05:30:00+0530");
    CHECK(textIn("NST3:30", utc(2026, 1, 1)) == "31/Dec/25, 20:30:00-0330");
    CHECK(textIn("XST0:30", utc(2026, 1, 1)) == "31/Dec/25, 23:30:00-0030");
    CHECK(textIn("LINT-14", utc(2026, 1, 1)) == "1/Jan/26, 14:00:00+1400");
}

TEST_CASE("the zone follows daylight saving time from one second to the next")
{
    EnvironmentVariable here("TZ", centralEurope);
    LogDateFormatter formatter;
    CHECK(formatter.text(utc(2026, 3, 29, 0, 59, 59)) == "29/Mar/26, 01:59:59+0100");
    CHECK(formatter.text(utc(2026, 3, 29, 1, 0, 0)) == "29/Mar/26, 03:00:00+0200");
    CHECK(formatter.text(utc(2026, 10, 25, 0, 59, 59)) == "25/Oct/26, 02:59:59+0200");
    CHECK(formatter.text(utc(2026, 10, 25, 1, 0, 0)) == "25/Oct/26, 02:00:00+0100");
}

TEST_CASE("a change of the system's zone shows in the next second")
{
    LogDateFormatter formatter;
    auto second = utc(2026, 6, 1, 12);
    {
        EnvironmentVariable here("TZ", "UTC0");
        CHECK(formatter.text(second) == "1/Jun/26, 12:00:00+0000");
        CHECK(formatter.text(second) == "1/Jun/26, 12:00:00+0000");
    }
    EnvironmentVariable there("TZ", "JST-9");
    CHECK(formatter.text(second + 1) == "1/Jun/26, 21:00:01+0900");
}

TEST_CASE("a clock that is set back is followed")
{
    EnvironmentVariable here("TZ", "UTC0");
    LogDateFormatter formatter;
    CHECK(formatter.text(utc(2026, 6, 1, 12, 0, 1)) == "1/Jun/26, 12:00:01+0000");
    CHECK(formatter.text(utc(2026, 6, 1, 11, 0, 0)) == "1/Jun/26, 11:00:00+0000");
    CHECK(formatter.text(0) == "1/Jan/70, 00:00:00+0000");
}
