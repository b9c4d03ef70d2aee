#include "agent/BackupStatus.h"
#include "scheduling/InstantDate.h"

#include <doctest/doctest.h>

using agent::BackupStatus;
using platform::Array;
using platform::Dictionary;
using scheduling::dateOf;

namespace {

Dictionary entry(std::int64_t at, const char* event)
{
    return {{"At", dateOf(at)}, {"Event", event}, {"Text", std::string(event) + " of " + std::to_string(at)}};
}

Dictionary missed(std::int64_t at, std::int64_t count = 1)
{
    auto made = entry(at, "missed");
    made.set("Reasons", Array{"battery"});
    if (count > 1)
        made.set("Count", count);
    return made;
}

Dictionary ended(std::int64_t at, bool succeeded)
{
    auto made = entry(at, "end");
    made.set("Succeeded", succeeded);
    return made;
}

BackupStatus statusWith(const Array& journal)
{
    return BackupStatus::inReply({{"Now", dateOf(1000)}, {"State", "waiting"}, {"Journal", journal}}).value();
}

} // namespace

TEST_CASE("everything is read from the helper's reply")
{
    const Dictionary reply{
        {"Now", dateOf(1000)},          {"State", "blocked"},     {"Reasons", Array{"battery", 3, "noProgram"}},
        {"LastSucceeded", dateOf(500)}, {"LastEnd", dateOf(900)}, {"Failures", 2}};
    BackupStatus expected;
    expected.now = 1000;
    expected.isOn = true;
    expected.reasons = {"battery", "noProgram"};
    expected.lastSucceeded = 500;
    expected.lastEnd = 900;
    expected.failures = 2;
    CHECK(BackupStatus::inReply(reply) == expected);
}

TEST_CASE("a reply without a time or a state is none, and every state but off is on")
{
    CHECK_FALSE(BackupStatus::inReply({{"State", "waiting"}}));
    CHECK_FALSE(BackupStatus::inReply({{"Now", dateOf(1)}}));
    for (const char* const state : {"off", "waiting", "blocked", "running"})
        CHECK(BackupStatus::inReply({{"Now", dateOf(1)}, {"State", state}})->isOn == (std::string(state) != "off"));
}

TEST_CASE("missed moments are counted back to the backup that was started last")
{
    CHECK(statusWith({missed(9), entry(8, "blocked"), missed(7), missed(6), entry(5, "start"), missed(4)}).missed == 3);
    CHECK(statusWith({missed(9), ended(8, false), missed(7)}).missed == 1);
    CHECK(statusWith({entry(9, "start"), missed(8)}).missed == 0);
    CHECK(statusWith({missed(9, 7), missed(8)}).missed == 8);
}

TEST_CASE("of missed moments the last one's reasons are told")
{
    auto last = missed(9);
    last.set("Reasons", Array{"asleep"});
    const auto status = statusWith({last, missed(8)});
    CHECK(status.lastMissed == 9);
    CHECK(status.missedReasons == std::vector<std::string>{"asleep"});
}

TEST_CASE("the sentence about a failure is that of the last end, if it was one")
{
    CHECK(statusWith({missed(9), ended(8, false), ended(7, false)}).failure == "end of 8");
    CHECK(statusWith({ended(8, true), ended(7, false)}).failure.empty());
}
