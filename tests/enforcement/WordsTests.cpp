#include "helper/enforcement/EnforcementWords.h"

#include <doctest/doctest.h>
#include <string>
#include <utility>
#include <vector>

using helper::EnforcementWords;
using helper::JournalEntry;
using scheduling::Reason;

namespace {

constexpr scheduling::Instant firstMidnight = 1'767'225'600; // 2026-01-01 in UTC, which is 05:45 in Kathmandu
constexpr std::int64_t hour = 3600;

// What is told at noon, UTC.
struct WordsFixture {
    scheduling::LocalClock clock{platform::TimeZone::named("UTC").value()};
    EnforcementWords words{clock, firstMidnight + 12 * hour};
};

} // namespace

TEST_CASE_FIXTURE(WordsFixture, "a start is told with the moment that was due, on another day with its date")
{
    const auto entry = words.started(firstMidnight + 9 * hour);
    CHECK(entry.text == "Started the backup of 09:00.");
    CHECK(entry.event == "start");
    CHECK(entry.at == firstMidnight + 12 * hour);
    CHECK(entry.due == firstMidnight + 9 * hour);
    CHECK_FALSE(entry.succeeded);
    CHECK(words.started(firstMidnight).text == "Started the backup of 00:00.");
    CHECK(words.started(firstMidnight - 1).text == "Started the backup of 2025-12-31 23:59.");
    CHECK(words.started(std::nullopt).text == "Started a backup by hand.");
    CHECK_FALSE(words.started(std::nullopt).due);

    const scheduling::LocalClock kathmandu(platform::TimeZone::named("Asia/Kathmandu").value());
    CHECK(EnforcementWords(kathmandu, firstMidnight).started(firstMidnight).text == "Started the backup of 05:45.");
}

TEST_CASE_FIXTURE(WordsFixture, "how long a backup took is told in seconds, minutes, or hours and minutes")
{
    using Row = std::pair<std::int64_t, const char*>;
    for (const auto& [seconds, text] :
         {Row{-1, "0 seconds"}, Row{0, "0 seconds"}, Row{1, "1 second"}, Row{59, "59 seconds"}, Row{60, "1 minute"},
          Row{119, "1 minute"}, Row{120, "2 minutes"}, Row{3599, "59 minutes"}, Row{3600, "1 hour"},
          Row{3659, "1 hour"}, Row{3660, "1 hour 1 minute"}, Row{7199, "1 hour 59 minutes"}, Row{7200, "2 hours"},
          Row{90'000, "25 hours"}}) {
        const auto entry = words.succeeded(seconds);
        CHECK(entry.text == std::string("The backup succeeded; it took ") + text + ".");
        CHECK(entry.event == "end");
        CHECK(entry.succeeded == true);
    }
}

TEST_CASE_FIXTURE(WordsFixture, "why a backup failed is told, and when it is due again")
{
    const auto entry = words.failed("it was stopped.", firstMidnight + 36 * hour);
    CHECK(entry.text == "The backup failed: it was stopped. Due again at 2026-01-02 12:00.");
    CHECK(entry.event == "end");
    CHECK(entry.succeeded == false);
    CHECK(words.failed("it was stopped.", std::nullopt).text == "The backup failed: it was stopped.");

    using Row = std::pair<std::optional<int>, const char*>;
    for (const auto& [status, text] :
         {Row{std::nullopt, "it stopped before its end."}, Row{-1, "its program was ended by signal 1."},
          Row{-15, "its program was ended by signal 15."}, Row{125, "its program ended with status 125."},
          Row{126, "its program cannot be run."}, Row{127, "its program is not there."},
          Row{128, "its program ended with status 128."}, Row{0, "its program ended with status 0."}})
        CHECK(EnforcementWords::failureOf(status) == text);
}

TEST_CASE_FIXTURE(WordsFixture, "each reason has its words, for what waits and for what was missed")
{
    struct Row {
        Reason reason;
        const char* name;
        const char* present;
        const char* past;
    };
    const auto due = firstMidnight + 9 * hour;
    for (const auto& [reason, name, present, past] :
         {Row{Reason::Suspended, "suspended", "backups are suspended at this time of day",
              "backups were suspended at that time of day"},
          Row{Reason::Battery, "battery", "on battery power", "the computer was on battery power"},
          Row{Reason::Passive, "passive", "nobody is logged in at the computer, or its lid is closed",
              "nobody was logged in at the computer, or its lid was closed"},
          Row{Reason::SleepPreventers, "sleepPreventers", "a program keeps the computer awake",
              "a program kept the computer awake"},
          Row{Reason::NotWired, "notWired", "not on a wired network", "the computer was not on a wired network"},
          Row{Reason::Running, "running", "a backup is running", "a backup was running"},
          Row{Reason::Maintenance, "maintenance", "an update or the uninstallation is at work",
              "an update or the uninstallation was at work"},
          Row{Reason::NoProgram, "noProgram", "no backup program is chosen, or it is not there",
              "no backup program was chosen, or it was not there"}}) {
        const auto waiting = words.blocked(due, {reason});
        CHECK(waiting.text == std::string("Waiting to back up: ") + present + ".");
        CHECK(waiting.event == "blocked");
        CHECK(waiting.due == due);
        CHECK(waiting.reasons == std::vector<std::string>{name});
        const auto missed = words.missed({.due = due, .count = 1, .reasons = {reason}}, true);
        CHECK(missed.text == std::string("Missed the backup of 09:00: ") + past + ".");
        CHECK(missed.event == "missed");
        CHECK(missed.due == due);
        CHECK_FALSE(missed.count);
    }
    CHECK(words.blocked(due, {Reason::Running, Reason::Battery}).text
          == "Waiting to back up: on battery power; a backup is running.");
}

TEST_CASE_FIXTURE(WordsFixture, "moments that were missed together are counted, and sleep alone is their reason")
{
    const auto due = firstMidnight + 9 * hour;
    const auto entry = words.missed({.due = due, .count = 2, .reasons = {Reason::Asleep, Reason::Battery}}, true);
    CHECK(entry.text == "Missed 2 backups, the last of them that of 09:00: the computer was asleep or off.");
    CHECK(entry.count == 2);
    CHECK(entry.reasons == std::vector<std::string>{"battery", "asleep"});
    CHECK(words.missed({.due = due, .count = 1, .reasons = {Reason::Asleep}}, false).text
          == "Missed the backup of 09:00: the computer was asleep.");
    CHECK(words.missed({.due = due, .count = 1, .reasons = {}}, true).text == "Missed the backup of 09:00.");
}
