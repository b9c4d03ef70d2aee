#include "activity/model/BackupStatus.h"
#include "tests/activity/Told.h"

#include <doctest/doctest.h>

using namespace scheduling;
using platform::Array;
using platform::Dictionary;

TEST_CASE("every value of the helper's answer about backups is read")
{
    const auto status = BackupStatus::fromReply(
        told::replyWith({{"State", "blocked"},
                         {"Due", told::date("2026-10-24T11:00:00Z")},
                         {"Reasons", Array{"suspended", "battery"}},
                         {"LastStart", told::date("2026-10-23T11:00:00Z")},
                         {"LastEnd", told::date("2026-10-23T11:05:00Z")},
                         {"LastSucceeded", told::date("2026-10-22T11:05:00Z")},
                         {"Failures", 2},
                         {"Upcoming",
                          Array{Dictionary{{"At", told::date("2026-10-25T00:30:00Z")},
                                           {"Local", "2026-10-25T02:30:00+02:00"},
                                           {"Suspended", true},
                                           {"Shifted", false},
                                           {"Repeated", true}}}},
                         {"Journal",
                          Array{Dictionary{{"At", told::date("2026-10-23T11:05:00Z")},
                                           {"Event", "end"},
                                           {"Succeeded", false},
                                           {"Text", "The backup failed: its program ended with status 2."}}}}}));
    CHECK(status.now == told::instant(told::noon));
    CHECK(status.zone == "Europe/Berlin");
    CHECK(status.state == State::Blocked);
    CHECK(status.due == told::instant("2026-10-24T11:00:00Z"));
    CHECK(status.reasons == ToldReasons{{Reason::Suspended, Reason::Battery}, false});
    CHECK(status.lastStart == told::instant("2026-10-23T11:00:00Z"));
    CHECK(status.lastEnd == told::instant("2026-10-23T11:05:00Z"));
    CHECK(status.lastSucceeded == told::instant("2026-10-22T11:05:00Z"));
    CHECK(status.failures == 2);
    CHECK(status.program == "Borg");
    CHECK(status.upcoming
          == std::vector{Upcoming{
              .at = told::instant("2026-10-25T00:30:00Z"), .suspended = true, .shifted = false, .repeated = true}});
    REQUIRE(status.journal.size() == 1);
    CHECK(status.journal[0].event == "end");
    CHECK(status.journal[0].succeeded == false);
}

TEST_CASE("each state is read by its name, and one that nobody knows is none")
{
    const auto stateOf = [](const char* name) {
        return BackupStatus::fromReply(told::replyWith({{"State", name}})).state;
    };
    CHECK(stateOf("off") == State::Off);
    CHECK(stateOf("waiting") == State::Waiting);
    CHECK(stateOf("blocked") == State::Blocked);
    CHECK(stateOf("running") == State::Running);
    CHECK_FALSE(stateOf("dreaming"));
    CHECK_FALSE(stateOf(""));
}

TEST_CASE("a reason that only a newer helper knows is not lost")
{
    const auto reasons = ToldReasons::named({"notWired", "moonlight"});
    CHECK(reasons.known == Reasons{Reason::NotWired});
    CHECK(reasons.hasOthers);
    CHECK_FALSE(ToldReasons::named({"notWired"}).hasOthers);
    CHECK(ToldReasons::named({}).empty());
    CHECK_FALSE(ToldReasons::named({"moonlight"}).empty());
}

TEST_CASE("an answer without anything, or with values of other types, is read as one that tells nothing")
{
    for (const auto& reply : {Dictionary(),
                              Dictionary{{"Now", "noon"},
                                         {"Zone", 5},
                                         {"State", Array{}},
                                         {"Due", "soon"},
                                         {"Reasons", "battery"},
                                         {"Failures", "two"},
                                         {"Program", 7},
                                         {"Upcoming", Dictionary{{"At", 5}}},
                                         {"Journal", true}},
                              Dictionary{{"Reasons", Array{5, true}},
                                         {"Upcoming", Array{"09:00", Dictionary{{"At", "09:00"}}}},
                                         {"Journal", Array{Dictionary{{"Text", "Something"}}, 5}}}}) {
        const auto status = BackupStatus::fromReply(reply);
        CHECK(status.now == 0);
        CHECK(status.zone.empty());
        CHECK_FALSE(status.state);
        CHECK_FALSE(status.due);
        CHECK(status.reasons.empty());
        CHECK_FALSE(status.lastStart);
        CHECK(status.failures == 0);
        CHECK(status.program.empty());
        CHECK(status.upcoming.empty());
        CHECK(status.journal.empty());
    }
}
