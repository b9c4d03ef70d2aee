#include "activity/model/ActivityWords.h"
#include "tests/activity/Told.h"

#include <doctest/doctest.h>

using scheduling::Instant;
using scheduling::JournalEntry;

namespace {

JournalEntry entry(const char* at, const char* event)
{
    JournalEntry made;
    made.at = told::instant(at);
    made.event = event;
    return made;
}

JournalEntry start(const char* at, std::optional<Instant> due = {})
{
    auto made = entry(at, "start");
    made.due = due;
    return made;
}

JournalEntry end(const char* at, bool succeeded, const char* text = "")
{
    auto made = entry(at, "end");
    made.succeeded = succeeded;
    made.text = text;
    return made;
}

JournalEntry missed(const char* at, const char* due, std::vector<std::string> reasons, std::optional<int> count = {})
{
    auto made = entry(at, "missed");
    made.due = told::instant(due);
    made.reasons = std::move(reasons);
    made.count = count;
    return made;
}

std::string textOf(const std::vector<JournalEntry>& journal)
{
    MomentText moments("Europe/Berlin", told::instant(told::noon));
    return journalText(journal, moments);
}

} // namespace

TEST_CASE("an empty journal says that nothing has happened")
{
    CHECK(textOf({}) == "Nothing has happened yet.");
}

TEST_CASE("starts are told with the moment that was due, or as made by hand")
{
    CHECK(textOf({start("2026-10-24T07:00:01Z", told::instant("2026-10-24T07:00:00Z"))})
          == "Today, 09:00 – Started the backup of 09:00.");
    CHECK(textOf({start("2026-10-24T07:00:01Z", told::instant("2026-10-23T07:00:00Z"))})
          == "Today, 09:00 – Started the backup of 23 Oct 2026, 09:00.");
    CHECK(textOf({start("2026-10-23T07:00:01Z")}) == "Yesterday, 09:00 – Started a backup by hand.");
}

TEST_CASE("a success is told with the time since its start, whatever was told between them")
{
    auto blocked = entry("2026-10-24T07:01:00Z", "blocked");
    blocked.reasons = {"running"};
    CHECK(textOf({end("2026-10-24T07:03:00Z", true), blocked, start("2026-10-24T07:00:00Z")})
          == "Today, 09:03 – The backup succeeded; it took 3 minutes.\n"
             "Today, 09:01 – Waiting to back up: another backup running.\n"
             "Today, 09:00 – Started a backup by hand.");
    CHECK(textOf({end("2026-10-24T07:03:00Z", true)}) == "Today, 09:03 – The backup succeeded.");
    CHECK(textOf({end("2026-10-24T07:03:00Z", true), end("2026-10-24T07:02:00Z", true), start("2026-10-24T07:00:00Z")})
          == "Today, 09:03 – The backup succeeded.\n"
             "Today, 09:02 – The backup succeeded; it took 2 minutes.\n"
             "Today, 09:00 – Started a backup by hand.");
}

TEST_CASE("a failure is told in the helper's own words, as far as there are any")
{
    CHECK(textOf({end("2026-10-24T07:00:00Z", false,
                      "The backup failed: its program ended with status 2. Due again at 09:05.")})
          == "Today, 09:00 – The backup failed: its program ended with status 2. Due again at 09:05.");
    CHECK(textOf({end("2026-10-24T07:00:00Z", false, "It went wrong.")}) == "Today, 09:00 – The backup failed.");
    auto silent = entry("2026-10-24T07:00:00Z", "end");
    CHECK(textOf({silent}) == "Today, 09:00 – The backup failed.");
}

TEST_CASE("missed moments are told with their reasons, and many as one")
{
    CHECK(textOf({missed("2026-10-24T07:10:01Z", "2026-10-24T07:00:00Z", {"asleep"})})
          == "Today, 09:10 – Missed the backup of 09:00: the computer asleep or off.");
    CHECK(
        textOf({missed("2026-10-24T07:10:01Z", "2026-10-24T04:00:00Z", {"suspended", "battery"}, 7)})
        == "Today, 09:10 – Missed 7 backups, the last of them that of 06:00: backups suspended at that time of day; on "
           "battery power.");
}

TEST_CASE("what stands in the way is told for a backup that waits")
{
    auto blocked = entry("2026-10-24T07:00:00Z", "blocked");
    blocked.reasons = {"battery", "moonlight"};
    CHECK(textOf({blocked}) == "Today, 09:00 – Waiting to back up: on battery power; another reason.");
}
