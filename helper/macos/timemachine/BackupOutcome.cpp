#include "helper/macos/timemachine/BackupOutcome.h"

#include "scheduling/InstantDate.h"

#include <algorithm>
#include <cstdlib>

namespace helper {

using platform::Dictionary;
using scheduling::instantOf;

namespace {

bool isMade(const BackupTrace& trace, const BackupMemory& after)
{
    if (!after.newest)
        return false;
    return trace.newestBefore ? *after.newest > *trace.newestBefore : *after.newest >= trace.began;
}

} // namespace

std::optional<BackupMemory> BackupMemory::inDestinations(const platform::PropertyList& destinations)
{
    const auto* const list = destinations.array();
    if (!list)
        return std::nullopt;
    BackupMemory memory;
    std::optional<scheduling::Instant> latestAttempt;
    const auto later = [](std::optional<scheduling::Instant>& kept, const platform::Array* dates) {
        for (const auto& date : dates ? *dates : platform::Array()) {
            if (const auto instant = instantOf(&date))
                kept = std::max(kept.value_or(*instant), *instant);
        }
    };
    for (const auto& each : *list) {
        const auto* const destination = each.dictionary();
        if (!destination)
            continue;
        later(memory.newest, destination->arrayForKey("SnapshotDates"));
        std::optional<scheduling::Instant> attempt;
        later(attempt, destination->arrayForKey("SnapshotDates"));
        later(attempt, destination->arrayForKey("AttemptDates"));
        if (attempt >= latestAttempt) {
            latestAttempt = attempt;
            memory.result = destination->integerForKey("RESULT");
        }
    }
    return memory;
}

BackupOutcome BackupOutcome::of(const BackupTrace& trace, const std::optional<BackupMemory>& after)
{
    if (after && isMade(trace, *after))
        return {.status = 0, .reason = {}};
    if (trace.wasStopping)
        return {.status = EXIT_FAILURE, .reason = "it was stopped."};
    if (!trace.wasRunning)
        return {.status = EXIT_FAILURE, .reason = "Time Machine did not begin it. Its disk may not be there."};
    if (after && after->result != 0)
        return {.status = EXIT_FAILURE,
                .reason = "Time Machine ended it with error " + std::to_string(after->result) + "."};
    if (!after && trace.wasCopying)
        return {.status = 0, .reason = {}};
    return {};
}

} // namespace helper
