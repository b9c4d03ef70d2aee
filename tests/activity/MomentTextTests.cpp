#include "activity/model/MomentText.h"
#include "tests/activity/Told.h"

#include <doctest/doctest.h>

namespace {

std::string textOf(const char* moment, const char* zone = "Europe/Berlin", const char* now = told::noon)
{
    return MomentText(zone, told::instant(now)).text(told::instant(moment));
}

} // namespace

TEST_CASE("a moment is told by its day of the week as far as that is clear, and by its date elsewhere")
{
    CHECK(textOf("2026-10-22T21:59:59Z") == "22 Oct 2026, 23:59");
    CHECK(textOf("2026-10-22T22:00:00Z") == "Yesterday, 00:00");
    CHECK(textOf("2026-10-24T07:00:00Z") == "Today, 09:00");
    CHECK(textOf("2026-10-24T21:59:00Z") == "Today, 23:59");
    CHECK(textOf("2026-10-24T22:00:00Z") == "Tomorrow, 00:00");
    CHECK(textOf("2026-10-26T08:00:00Z") == "Monday, 09:00");
    CHECK(textOf("2026-10-30T22:59:00Z") == "Friday, 23:59");
    CHECK(textOf("2026-10-30T23:00:00Z") == "31 Oct 2026, 00:00");
    CHECK(textOf("1969-12-31T23:30:00Z", "UTC", "1969-12-29T12:00:00Z") == "Wednesday, 23:30");
}

TEST_CASE("times are those of the zone, before and after its clocks are put back, and of UTC in one that is not known")
{
    CHECK(textOf("2026-10-25T00:30:00Z") == "Tomorrow, 02:30");
    CHECK(textOf("2026-10-25T01:30:00Z") == "Tomorrow, 02:30");
    CHECK(textOf("2026-10-25T00:30:00Z", "Asia/Kathmandu") == "Tomorrow, 06:15");
    CHECK(textOf("2026-10-25T00:30:00Z", "Nowhere/Land") == "Tomorrow, 00:30");
}

TEST_CASE("a moment of an entry's own day needs no date, one of another day has it")
{
    MomentText moments("Europe/Berlin", told::instant(told::noon));
    const auto day = told::instant("2026-10-20T08:00:00Z");
    CHECK(moments.textOnDayOf(told::instant("2026-10-20T07:00:00Z"), day) == "09:00");
    CHECK(moments.textOnDayOf(told::instant("2026-10-19T07:00:00Z"), day) == "19 Oct 2026, 09:00");
    CHECK(moments.textOnDayOf(told::instant("2026-10-24T07:00:00Z"), day) == "24 Oct 2026, 09:00");
}

TEST_CASE("today ends at the zone's midnight, whatever the length of the day")
{
    CHECK(MomentText("Europe/Berlin", told::instant(told::noon)).midnight() == told::instant("2026-10-24T22:00:00Z"));
    CHECK(MomentText("Europe/Berlin", told::instant("2026-10-25T12:00:00Z")).midnight()
          == told::instant("2026-10-25T23:00:00Z"));
}

TEST_CASE("lengths are told in the two units that matter")
{
    CHECK(MomentText::length(-5) == "0 seconds");
    CHECK(MomentText::length(1) == "1 second");
    CHECK(MomentText::length(59) == "59 seconds");
    CHECK(MomentText::length(60) == "1 minute");
    CHECK(MomentText::length(3'599) == "59 minutes");
    CHECK(MomentText::length(3'600) == "1 hour");
    CHECK(MomentText::length(3'659) == "1 hour");
    CHECK(MomentText::length(7'500) == "2 hours 5 minutes");
}
