#include "helper/macos/timemachine/BackupNote.h"
#include "helper/macos/timemachine/BackupOutcome.h"
#include "scheduling/InstantDate.h"

#include <doctest/doctest.h>

using helper::BackupMemory;
using helper::BackupNote;
using helper::BackupOutcome;
using helper::BackupTrace;
using platform::Array;
using platform::Dictionary;
using scheduling::dateOf;

namespace {

constexpr scheduling::Instant began = 1'700'000'000;

BackupTrace trace()
{
    return {
        .began = began, .newestBefore = began - 3'600, .wasRunning = true, .wasCopying = true, .wasStopping = false};
}

BackupMemory memory(scheduling::Instant newest, std::int64_t result = 0)
{
    return {.newest = newest, .result = result};
}

} // namespace

TEST_CASE("the settings of Time Machine tell the newest backup of all disks and the last attempt's result")
{
    const Array destinations{
        Dictionary{{"SnapshotDates", Array{dateOf(100), dateOf(300), dateOf(200)}}, {"RESULT", 0}},
        Dictionary{{"SnapshotDates", Array{dateOf(250)}}, {"AttemptDates", Array{dateOf(400)}}, {"RESULT", 26}}};
    CHECK(BackupMemory::inDestinations(destinations) == memory(300, 26));
    const auto resultAfter = [](std::int64_t first, std::int64_t second) {
        return BackupMemory::inDestinations(Array{Dictionary{{"AttemptDates", Array{dateOf(first)}}, {"RESULT", 1}},
                                                  Dictionary{{"SnapshotDates", Array{dateOf(second)}}, {"RESULT", 2}}})
            ->result;
    };
    CHECK(resultAfter(401, 400) == 1);
    CHECK(resultAfter(400, 400) == 2); // the later one in the list
    CHECK(resultAfter(399, 400) == 2);
}

TEST_CASE("settings without backups tell that there are none")
{
    CHECK(BackupMemory::inDestinations(Array{}) == BackupMemory{});
    CHECK(BackupMemory::inDestinations(Array{Dictionary{{"RESULT", 18}}}) == BackupMemory{.newest = {}, .result = 18});
    CHECK(BackupMemory::inDestinations(Array{"x", Dictionary{{"SnapshotDates", "never"}}}) == BackupMemory{});
    CHECK_FALSE(BackupMemory::inDestinations("none"));
}

TEST_CASE("a backup that Time Machine remembers has succeeded, whatever else was seen")
{
    auto seen = trace();
    CHECK(BackupOutcome::of(seen, memory(began + 10)) == BackupOutcome{.status = 0, .reason = {}});
    CHECK(BackupOutcome::of(seen, memory(began + 10, 5)).status == 0);
    seen = {.began = began, .newestBefore = {}, .wasRunning = false, .wasCopying = false, .wasStopping = false};
    CHECK(BackupOutcome::of(seen, memory(began)).status == 0);
    CHECK(BackupOutcome::of(seen, memory(began - 1)).status == 1); // an earlier one
}

TEST_CASE("a new backup is one that is newer than the newest before, if the clock was put back too")
{
    auto seen = trace();
    seen.newestBefore = began - 100'000;
    CHECK(BackupOutcome::of(seen, memory(began - 90'000)).status == 0);
    CHECK_FALSE(BackupOutcome::of(seen, memory(began - 100'000)).status);
}

TEST_CASE("a failed backup is told as what was seen of it")
{
    auto seen = trace();
    CHECK(BackupOutcome::of(seen, memory(began - 3'600)) == BackupOutcome{});
    CHECK(BackupOutcome::of(seen, memory(began - 3'600, 26))
          == BackupOutcome{.status = 1, .reason = "Time Machine ended it with error 26."});
    seen.wasStopping = true;
    CHECK(BackupOutcome::of(seen, memory(began - 3'600, 26))
          == BackupOutcome{.status = 1, .reason = "it was stopped."});
    seen = trace();
    seen.wasRunning = seen.wasCopying = false;
    CHECK(BackupOutcome::of(seen, memory(began - 3'600))
          == BackupOutcome{.status = 1, .reason = "Time Machine did not begin it. Its disk may not be there."});
}

TEST_CASE("where nothing may be known of the backups, one that copied to its end is taken for a success")
{
    auto seen = trace();
    CHECK(BackupOutcome::of(seen, {}).status == 0);
    seen.wasCopying = false;
    CHECK_FALSE(BackupOutcome::of(seen, {}).status);
    seen.wasStopping = true;
    CHECK(BackupOutcome::of(seen, {}).status == 1);
    seen.wasRunning = seen.wasStopping = false;
    CHECK(BackupOutcome::of(seen, {}).status == 1);
}

TEST_CASE("what is noted of a backup is read as it was written")
{
    BackupNote note{.identifier = "a", .trace = trace(), .hasEnded = false, .outcome = {}};
    CHECK(BackupNote::inDictionary(note.dictionary()) == note);
    note.hasEnded = true;
    note.trace.newestBefore.reset();
    note.trace.wasStopping = true;
    note.outcome = {.status = 1, .reason = "it was stopped."};
    CHECK(BackupNote::inDictionary(note.dictionary()) == note);
    CHECK_FALSE(BackupNote::inDictionary({}));
    CHECK_FALSE(BackupNote::inDictionary({{"Identifier", "a"}, {"Began", "now"}}));
}
