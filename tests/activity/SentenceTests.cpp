#include "activity/model/ActivityWords.h"
#include "protocol/ErrorCodes.h"
#include "tests/activity/Told.h"
#include "tests/messaging/Logging.h"

#include <doctest/doctest.h>
#include <set>

using namespace scheduling;
using platform::Array;
using Lines = std::vector<std::string>;

namespace {

MomentText moments()
{
    return {"Europe/Berlin", told::instant(told::noon)};
}

std::string stateOf(const platform::Dictionary& reply, const std::optional<ScheduleSettings>& applied = {})
{
    auto text = moments();
    return ActivityWords::stateSentence(BackupStatus::fromReply(reply), applied, text);
}

std::string lastOf(const platform::Dictionary& reply)
{
    auto text = moments();
    return ActivityWords::lastBackupSentence(BackupStatus::fromReply(reply), text);
}

Lines notesOf(const platform::Dictionary& reply, const std::optional<ScheduleSettings>& applied = {})
{
    auto text = moments();
    return ActivityWords::notes(BackupStatus::fromReply(reply), applied, text);
}

platform::Error messagerError(std::int64_t code)
{
    return {ZRKMessagerErrorDomain, code, {{"message", 5}, {"service", "com.zerkolin.brevane.scheduler"}}, nullptr};
}

} // namespace

TEST_CASE("the state is told in one sentence")
{
    using told::date;
    using told::replyWith;
    CHECK(stateOf(replyWith({{"State", "off"}})) == "Backups are off.");
    CHECK(stateOf(replyWith({{"State", "blocked"}, {"Reasons", Array{"battery"}}})) == "Waiting: on battery power");
    CHECK(stateOf(replyWith({{"State", "blocked"}, {"Reasons", Array{"noProgram", "notWired", "suspended"}}}))
          == "Waiting: backups suspended at that time of day; no wired network; no backup program chosen, or it is not "
             "there");
    CHECK(stateOf(replyWith({{"Due", date("2026-10-25T07:00:00Z")}})) == "Next backup: Tomorrow, 08:00");
    CHECK(stateOf(replyWith({{"Due", date(told::noon)}})) == "A backup is about to start.");
    CHECK(stateOf(replyWith({{"State", "running"}})) == "A backup is running.");
    CHECK(stateOf(replyWith({{"State", "running"}, {"LastStart", date("2026-10-24T11:55:00Z")}}))
          == "A backup is running. Started: Today, 13:55");
    CHECK(stateOf(replyWith({{"State", "dreaming"}}))
          == "This version of Brevane does not understand what the background scheduler tells.");
}

TEST_CASE("a backup that the helper did not start is told without the times of the one before")
{
    CHECK(stateOf(told::replyWith({{"State", "running"},
                                   {"LastStart", told::date("2026-10-23T11:55:00Z")},
                                   {"LastEnd", told::date("2026-10-23T11:56:00Z")}}))
          == "A backup is running.");
}

TEST_CASE("without a moment the sentence says what is waited for")
{
    const ScheduleSettings inactive{{"Backups", true}, {"BackupsMode", "WhenInactive"}};
    CHECK(stateOf(told::reply(), inactive) == "Waiting for the computer to be inactive.");
    CHECK(stateOf(told::reply(), told::dailyAt({})) == "No backup is due.");
    CHECK(stateOf(told::reply()) == "No backup is due.");
}

TEST_CASE("each reason has its own words")
{
    std::set<std::string> all;
    for (const char* const name : {"suspended", "battery", "passive", "sleepPreventers", "notWired", "running",
                                   "maintenance", "noProgram", "asleep", "moonlight"}) {
        const auto words = ActivityWords::reasons(ToldReasons::named({name}));
        CHECK_FALSE(words.empty());
        CHECK_FALSE(words.ends_with("."));
        CHECK(all.insert(words).second);
    }
    CHECK(ActivityWords::reasons({}) == "another reason");
}

TEST_CASE("the last backup is told with its outcome and when it ended")
{
    using told::date;
    using told::replyWith;
    CHECK(lastOf(told::reply()) == "No backup yet.");
    const auto start = date("2026-10-24T07:00:00Z");
    const auto end = date("2026-10-24T07:05:00Z");
    const auto before = date("2026-10-23T07:05:00Z");
    CHECK(lastOf(replyWith({{"LastStart", start}, {"LastEnd", end}, {"LastSucceeded", end}}))
          == "Last backup: Today, 09:05, successful.");
    CHECK(lastOf(replyWith({{"LastStart", start}, {"LastEnd", end}, {"LastSucceeded", before}}))
          == "Last backup: Today, 09:05, failed. Last successful backup: Yesterday, 09:05.");
    CHECK(lastOf(replyWith({{"LastStart", start}, {"LastEnd", end}}))
          == "Last backup: Today, 09:05, failed. No backup was successful yet.");
    CHECK(lastOf(replyWith({{"LastStart", start}, {"LastSucceeded", before}}))
          == "Last successful backup: Yesterday, 09:05.");
    CHECK(lastOf(replyWith({{"LastStart", start}})) == "No backup was successful yet.");
}

TEST_CASE("what else is to be known stands in the notes, and nothing else does")
{
    using told::replyWith;
    CHECK(notesOf(told::reply(), told::dailyAt({9})).empty());
    CHECK(notesOf(replyWith({{"Failures", 1}})).empty());
    CHECK(notesOf(replyWith({{"Failures", 3}})) == Lines{"Failed backups in a row: 3."});
    CHECK(notesOf(replyWith({{"Notes", platform::Array{"Something is kept from it.", "And more."}}}))
          == Lines{"Something is kept from it.", "And more."});
    CHECK(notesOf(replyWith({{"Program", ""}})) == Lines{"No backup program is chosen."});
    CHECK(notesOf(replyWith({{"State", "blocked"}, {"Due", told::date("2026-10-24T11:00:00Z")}}))
          == Lines{"Due since: Today, 13:00."});
    CHECK(notesOf(told::reply(), told::suspended(told::dailyAt({9, 23}), 22, 6))
          == Lines{"Some times of day lie in the daily suspension. Their backups are missed each time."});
    CHECK(notesOf(told::reply(), told::suspended(told::dailyAt({9, 12}), 22, 6)).empty());
}

TEST_CASE("edits are told with what applying them would lead to")
{
    CHECK(ActivityWords::notesOnEdits({}) == Lines{"The edited settings are not applied yet."});
    CHECK(ActivityWords::notesOnEdits({.isOn = true, .upcoming = {}, .startsAtOnce = true, .missesEntries = true})
          == Lines{"The edited settings are not applied yet.",
                   "Applying them starts a backup at once, unless something stands in its way.",
                   "Some of their times of day lie in the daily suspension. Those backups would be missed each time."});
}

TEST_CASE("a list without moments says why")
{
    CHECK(ActivityWords::noMoments({{"Backups", false}}) == "Backups are off.");
    CHECK(ActivityWords::noMoments(told::with(told::dailyAt({9}), "Disabled", true)) == "Backups are off.");
    CHECK(ActivityWords::noMoments({{"Backups", true}})
          == "Backups wait until nobody uses the computer. When that will be is not known.");
    CHECK(ActivityWords::noMoments(told::dailyAt({})) == "There is no next backup.");
}

TEST_CASE("moments are marked where they are suspended, moved or repeated")
{
    CHECK(ActivityWords::marks({.at = 0}).empty());
    CHECK(ActivityWords::marks({.at = 0, .suspended = true}) == "suspended");
    CHECK(ActivityWords::marks({.at = 0, .shifted = true}) == "moved by the clock change");
    CHECK(ActivityWords::marks({.at = 0, .suspended = true, .repeated = true})
          == "suspended; comes twice by the clock change");
}

TEST_CASE("a helper that is not there, one of another version and one that fails are told apart")
{
    const Logging logging;
    using ActivityWords::sentenceForFailureToAsk;
    CHECK(sentenceForFailureToAsk(messagerError(ZRKMessagerErrorServiceUnavailable))
          == "The background scheduler does not run, or is not installed.");
    CHECK(sentenceForFailureToAsk(messagerError(ZRKMessagerErrorDeserializeMessage))
          == "The background scheduler is of another version, which does not tell about backups. Install the latest "
             "version of Brevane.");
    CHECK(sentenceForFailureToAsk(messagerError(ZRKMessagerErrorServiceDisappeared))
              .starts_with("The background scheduler did not answer. "));
}

TEST_CASE("why a backup could not be started is told in words")
{
    const Logging logging;
    using ActivityWords::sentenceForFailureToStart;
    CHECK(sentenceForFailureToStart(messagerError(ZRKMessagerErrorServiceUnavailable))
          == "The background scheduler does not run, or is not installed.");
    CHECK(sentenceForFailureToStart(messagerError(ZRKMessagerErrorDeserializeMessage))
          == "The background scheduler is of another version, which does not start backups. Install the latest version "
             "of Brevane.");
    CHECK(sentenceForFailureToStart({BRVErrorDomain, BRVErrorMissingValue, {{"key", "Program"}}, nullptr})
          == "No backup program is chosen.");
    CHECK(sentenceForFailureToStart({BRVErrorDomain, BRVErrorBackupRunning, {}, nullptr})
          == "A backup operation is currently running.");
}
