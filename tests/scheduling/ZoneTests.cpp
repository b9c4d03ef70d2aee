#include "platform/TimeZone.h"
#include "scheduling/InstantText.h"
#include "scheduling/LocalClock.h"
#include "tests/scheduling/Story.h"

#include <doctest/doctest.h>

using Lines = Story::Lines;
using namespace scheduling;

namespace {

LocalClock clockOf(const char* zone)
{
    return LocalClock(*platform::TimeZone::named(zone));
}

// The instant of a local time, itself written as if it were UTC.
std::string instantText(const char* zone, const char* local)
{
    return textOfInstant(clockOf(zone).instantOf(instantOf(local)));
}

std::string localText(const char* zone, const char* instant)
{
    return localTextOfInstant(clockOf(zone), instantOf(instant));
}

} // namespace

TEST_CASE("only names of IANA's zones are known")
{
    for (const char* name :
         {"UTC", "Etc/UTC", "GMT", "Europe/Berlin", "America/Argentina/Ushuaia", "Asia/Calcutta", "EST5EDT", "CET"})
        CHECK_MESSAGE(platform::TimeZone::named(name), name);
    for (const char* name :
         {"", "Europe", "Europe/Nowhere", "europe/berlin", "GMT+05:00", "PST", "Etc/Unknown", "SystemV/PST8"})
        CHECK_MESSAGE(!platform::TimeZone::named(name), name);
    CHECK(platform::TimeZone::named("Asia/Calcutta")->name() == "Asia/Calcutta");
}

TEST_CASE("a zone tells the changes of its offset, before and after an instant")
{
    const auto berlin = *platform::TimeZone::named("Europe/Berlin");
    const platform::TimeZone::Transition spring{instantOf("2026-03-29T01:00:00Z"), 3'600, 7'200};
    CHECK(berlin.nextTransition(spring.at - 1) == spring);
    CHECK(berlin.lastTransition(spring.at) == spring);
    CHECK(berlin.nextTransition(spring.at)->at == instantOf("2026-10-25T01:00:00Z"));
    CHECK(berlin.lastTransition(spring.at - 1)->at == instantOf("2025-10-26T01:00:00Z"));
    CHECK(berlin.offsetAt(spring.at - 1) == 3'600);
    CHECK(berlin.offsetAt(spring.at) == 7'200);
    CHECK_FALSE(platform::TimeZone::named("UTC")->nextTransition(0));
    CHECK_FALSE(platform::TimeZone::named("UTC")->lastTransition(0));
    // Dublin's winter time is the saving one: its offset changes all the same.
    CHECK(platform::TimeZone::named("Europe/Dublin")->nextTransition(spring.at - 1)
          == platform::TimeZone::Transition{spring.at, 0, 3'600});
}

TEST_CASE("the rules are those of the system, which knows the changes of the last years")
{
    // Egypt has summer time again since 2023, Mexico none since 2022.
    CHECK(platform::TimeZone::named("Africa/Cairo")->offsetAt(instantOf("2026-07-01T00:00:00Z")) == 10'800);
    CHECK(platform::TimeZone::named("America/Mexico_City")->offsetAt(instantOf("2026-07-01T00:00:00Z")) == -21'600);
}

TEST_CASE("the last rule of a zone goes on for ever")
{
    const auto berlin = *platform::TimeZone::named("Europe/Berlin");
    const auto spring = instantOf("5999-03-28T01:00:00Z");
    CHECK(berlin.nextTransition(spring - 1) == platform::TimeZone::Transition{spring, 3'600, 7'200});
    CHECK(berlin.lastTransition(spring) == platform::TimeZone::Transition{spring, 3'600, 7'200});
    CHECK(berlin.offsetAt(spring) == 7'200);
}

TEST_CASE("local texts have the offset")
{
    CHECK(localText("Europe/Berlin", "2026-10-25T00:30:00Z") == "2026-10-25T02:30:00+02:00");
    CHECK(localText("Europe/Berlin", "2026-10-25T01:30:00Z") == "2026-10-25T02:30:00+01:00");
    CHECK(localText("UTC", "2026-10-25T00:30:00Z") == "2026-10-25T00:30:00+00:00");
    CHECK(localText("America/St_Johns", "2026-01-01T00:00:00Z") == "2025-12-31T20:30:00-03:30");
    CHECK(localText("Asia/Kathmandu", "2026-01-01T00:00:00Z") == "2026-01-01T05:45:00+05:45");
    CHECK(textOfInstant(-1) == "1969-12-31T23:59:59Z");
    CHECK(textOfInstant(earliestInstant) == "0001-01-01T00:00:00Z");
    CHECK(textOfInstant(latestInstant) == "9999-12-31T23:59:59Z");
}

TEST_CASE("a local time in a gap stands for the first instant after it")
{
    CHECK(instantText("Europe/Berlin", "2026-03-29T01:59:59Z") == "2026-03-29T00:59:59Z");
    CHECK(instantText("Europe/Berlin", "2026-03-29T02:00:00Z") == "2026-03-29T01:00:00Z");
    CHECK(instantText("Europe/Berlin", "2026-03-29T02:59:59Z") == "2026-03-29T01:00:00Z");
    CHECK(instantText("Europe/Berlin", "2026-03-29T03:00:00Z") == "2026-03-29T01:00:00Z");
    CHECK(instantText("Europe/Berlin", "2026-03-29T03:00:01Z") == "2026-03-29T01:00:01Z");
}

TEST_CASE("a local time that comes twice stands for the first of the two")
{
    CHECK(instantText("Europe/Berlin", "2026-10-25T02:00:00Z") == "2026-10-25T00:00:00Z");
    CHECK(instantText("Europe/Berlin", "2026-10-25T02:59:59Z") == "2026-10-25T00:59:59Z");
    CHECK(instantText("Europe/Berlin", "2026-10-25T03:00:00Z") == "2026-10-25T02:00:00Z");
    const LocalClock berlin = clockOf("Europe/Berlin");
    CHECK(berlin.isRepeatedAt(instantOf("2026-10-25T00:30:00Z")));
    CHECK(berlin.isRepeatedAt(instantOf("2026-10-25T01:30:00Z")));
    CHECK_FALSE(berlin.isRepeatedAt(instantOf("2026-10-25T02:00:00Z")));
    CHECK_FALSE(berlin.isRepeatedAt(instantOf("2026-10-24T23:59:59Z")));
}

TEST_CASE("dublin: a daily 01:30 starts on the night of the gap and once on the night of the overlap")
{
    CHECK(Story(dailyRecord(1, 30)).in("Europe/Dublin", "2026-03-28T12:00:00Z").lasting(days(2)).play()
          == Lines{"03-29 02:00:00 start 03-29 01:00:00", "03-29 02:00:00 end well",
                   "03-30 01:30:00 start 03-30 00:30:00", "03-30 01:30:00 end well"});
    CHECK(Story(dailyRecord(1, 30)).in("Europe/Dublin", "2026-10-24T12:00:00Z").lasting(days(2)).play()
          == Lines{"10-25 01:30:00 start 10-25 00:30:00", "10-25 01:30:00 end well",
                   "10-26 01:30:00 start 10-26 01:30:00", "10-26 01:30:00 end well"});
}

TEST_CASE("lord Howe: clocks change by half an hour")
{
    CHECK(instantText("Australia/Lord_Howe", "2026-10-04T02:15:00Z") == "2026-10-03T15:30:00Z");
    CHECK(localText("Australia/Lord_Howe", "2026-10-03T15:30:00Z") == "2026-10-04T02:30:00+11:00");
    CHECK(instantText("Australia/Lord_Howe", "2026-04-05T01:45:00Z") == "2026-04-04T14:45:00Z");
    CHECK(instantText("Australia/Lord_Howe", "2026-04-05T02:00:00Z") == "2026-04-04T15:30:00Z");
}

TEST_CASE("apia: the day that was left out counts, and all its times are in the gap")
{
    CHECK(instantText("Pacific/Apia", "2011-12-30T09:00:00Z") == "2011-12-30T10:00:00Z");
    CHECK(localText("Pacific/Apia", "2011-12-30T10:00:00Z") == "2011-12-31T00:00:00+14:00");
    CHECK(Story(dailyRecord(9, 0)).in("Pacific/Apia", "2011-12-29T18:00:00Z").lasting(days(2)).play()
          == Lines{"12-29 09:00:00 start 12-29 19:00:00", "12-29 09:00:00 end well",
                   "12-31 00:00:00 start 12-30 10:00:00", "12-31 00:00:00 end well",
                   "12-31 09:00:00 start 12-30 19:00:00", "12-31 09:00:00 end well"});
    CHECK(Story(intervalRecord("Days", 2)).in("Pacific/Apia", "2011-12-29T19:00:00Z").lasting(days(4)).play().front()
          == "12-31 09:00:00 start 12-30 19:00:00");
}

TEST_CASE("kathmandu: an offset of five hours and three quarters")
{
    CHECK(Story(dailyRecord(9, 0)).in("Asia/Kathmandu", "2026-05-31T18:15:00Z").play()
          == Lines{"06-01 09:00:00 start 06-01 03:15:00", "06-01 09:00:00 end well"});
}

TEST_CASE("troll: clocks change by two hours")
{
    CHECK(instantText("Antarctica/Troll", "2026-03-29T01:30:00Z") == "2026-03-29T01:00:00Z");
    CHECK(localText("Antarctica/Troll", "2026-03-29T01:00:00Z") == "2026-03-29T03:00:00+02:00");
    CHECK(Story(dailyRecord(2, 0)).in("Antarctica/Troll", "2026-10-24T23:30:00Z").lasting(at(4, 0)).play()
          == Lines{"10-25 02:00:00 start 10-25 00:00:00", "10-25 02:00:00 end well"});
}

TEST_CASE("midnight itself may lie in a gap")
{
    CHECK(instantText("America/Sao_Paulo", "2018-11-04T00:00:00Z") == "2018-11-04T03:00:00Z");
    CHECK(localText("America/Sao_Paulo", "2018-11-04T03:00:00Z") == "2018-11-04T01:00:00-02:00");
}

TEST_CASE("every instant of a year is found again by its local time, or lies in an overlap")
{
    for (const char* zone :
         {"Europe/Berlin", "Australia/Lord_Howe", "Antarctica/Troll", "America/St_Johns", "Pacific/Apia", "UTC"}) {
        const LocalClock clock = clockOf(zone);
        Instant shownUntil = earliestInstant;
        for (Instant instant = instantOf("2011-01-01T00:00:00Z"); instant < instantOf("2012-01-01T00:00:00Z");
             instant += 900) {
            const Instant found = clock.instantOf(clock.localAt(instant));
            if (found == instant)
                CHECK(clock.latestShown(instant) == clock.localAt(instant));
            else
                CHECK((found < instant && clock.isRepeatedAt(instant) && clock.isRepeatedAt(found)
                       && clock.latestShown(instant) > clock.localAt(instant)));
            CHECK(clock.latestShown(instant) >= shownUntil);
            shownUntil = clock.latestShown(instant);
        }
    }
}
