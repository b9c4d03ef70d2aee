#include "platform/DateFormat.h"
#include "tests/support/EnvironmentVariable.h"

#include <ctime>
#include <doctest/doctest.h>
#include <string>

using platform::DateFormat;
using platform::DateStyle;

namespace {

constexpr const char* toolPattern = "yyyy.MM.dd HH:mm:ss.SSSSSSZZZ";

struct Place {
    Place(const char* locale, const char* zone) : _locale("LC_ALL", locale), _zone("TZ", zone) { ::tzset(); }
    ~Place() { ::tzset(); }

private:
    EnvironmentVariable _locale;
    EnvironmentVariable _zone;
};

} // namespace

TEST_CASE("the log tool's date is read to the second, with its zone")
{
    const Place place("C", "UTC");
    auto parser = DateFormat::withPattern(toolPattern);
    const auto date = parser.dateFromString("2026.11.20 09:56:22.123456+0100");
    REQUIRE(date);
    CHECK(static_cast<long>(*date) == 1795164982);
    CHECK(parser.dateFromString("1969.12.31 23:59:59.000000+0000") == -1.0);
    CHECK(parser.dateFromString("2026.11.20 09:56:22.123456-0330"));
}

TEST_CASE("what is no date in the pattern, or has a field out of range, is not read")
{
    const Place place("C", "UTC");
    auto parser = DateFormat::withPattern(toolPattern);
    for (const char* const text :
         {"", "???", "2026", "2026.13.20 09:56:22.123456+0100", "2026.02.30 09:56:22.123456+0100",
          "2026.11.20 24:56:22.123456+0100", "2026.11.20 09:60:22.123456+0100", "2026.11.20 09:56:22.123456+0100 ",
          "2026.11.20 09:56:22.123456+0100x", "2026.11.20 09:56:22", "20 Nov 2026"}) {
        CAPTURE(text);
        CHECK_FALSE(parser.dateFromString(text));
    }
    CHECK(parser.dateFromString("2026.11.20 09:56:22.123456+0100")); // still
}

TEST_CASE("a date is printed in the user's language and time zone")
{
    struct Expected {
        const char* locale;
        const char* zone;
        const char* text;
    };
    for (const auto& [locale, zone, text] : {Expected{"en_US.UTF-8", "UTC", "11/20/26, 8:56:22\u202FAM"},
                                             {"en_GB.UTF-8", "UTC", "20/11/2026, 08:56:22"},
                                             {"de_DE.UTF-8", "Europe/Berlin", "20.11.26, 09:56:22"},
                                             {"ja_JP.UTF-8", "Asia/Tokyo", "2026/11/20 17:56:22"}}) {
        const Place place(locale, zone);
        CAPTURE(locale);
        CHECK(DateFormat::withStyles(DateStyle::Short, DateStyle::Medium).stringFromDate(1795164982.9) == text);
    }
}
