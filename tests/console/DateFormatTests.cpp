#include "platform/DateFormat.h"
#include "tests/support/EnvironmentVariable.h"

#include <ctime>
#include <doctest/doctest.h>
#include <string>

using platform::DateFormat;
using platform::DateStyle;

namespace {

struct Place {
    Place(const char* locale, const char* zone) : _locale("LC_ALL", locale), _zone("TZ", zone) { ::tzset(); }
    ~Place() { ::tzset(); }

private:
    EnvironmentVariable _locale;
    EnvironmentVariable _zone;
};

} // namespace

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
                                             {"ja_JP.UTF-8", "Asia/Tokyo", "2026/11/20 17:56:22"},
                                             // Their own calendars and digits.
                                             {"th_TH.UTF-8", "Asia/Bangkok", "20/11/69 15:56:22"},
                                             {"fa_IR.UTF-8", "Asia/Tehran", "۱۴۰۵/۸/۲۹, ۱۲:۲۶:۲۲"},
                                             {"ar_SA.UTF-8", "Asia/Riyadh", "١٠\u200F/٦\u200F/١٤٤٨ هـ، ١١:٥٦:٢٢ ص"}}) {
        const Place place(locale, zone);
        CAPTURE(locale);
        CHECK(DateFormat::withStyles(DateStyle::Short, DateStyle::Medium).stringFromDate(1795164982.9) == text);
    }
}

TEST_CASE("dates of one minute and of others read the same from one printer as from a fresh one each")
{
    for (const char* const locale : {"en_US.UTF-8", "de_DE.UTF-8", "th_TH.UTF-8", "fa_IR.UTF-8", "ar_EG.UTF-8",
                                     "my_MM.UTF-8", "ff_GN@adlam", "zh_CN.UTF-8"}) {
        // Amsterdam was seconds off until 1937, Dublin until 1916.
        for (const char* const zone : {"UTC", "Asia/Kathmandu", "Europe/Amsterdam", "Europe/Dublin"}) {
            const Place place(locale, zone);
            for (const auto style : {DateStyle::None, DateStyle::Short, DateStyle::Medium}) {
                auto printer = DateFormat::withStyles(DateStyle::Short, style);
                for (const double seconds : {1795164982.0, 1795164982.9, 1795164983.0, 1795165019.0, 1795164960.0,
                                             1795165020.0, -0.5, -1.0, 0.0, 1.0, -2000000000.0, -2000000001.0,
                                             -1025745573.0, -1025745572.0, -1025745571.0, 1e15, 1e15 + 1}) {
                    CAPTURE(locale);
                    CAPTURE(zone);
                    CAPTURE(seconds);
                    CHECK(printer.stringFromDate(seconds)
                          == DateFormat::withStyles(DateStyle::Short, style).stringFromDate(seconds));
                }
            }
        }
    }
}

TEST_CASE("a new zone changes the dates of the minute that was printed last")
{
    const Place place("de_DE.UTF-8", "UTC");
    auto printer = DateFormat::withStyles(DateStyle::Short, DateStyle::Medium);
    CHECK(printer.stringFromDate(1795164982) == "20.11.26, 08:56:22");
    printer.setTimeZone("Asia/Tokyo");
    CHECK(printer.stringFromDate(1795164982) == "20.11.26, 17:56:22");
}
