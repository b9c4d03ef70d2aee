#pragma once

#include "scheduling/Instant.h"

#include <optional>

namespace scheduling {

// What is remembered of earlier runs, kept on disk: written before a backup is started and after it ended.
struct Memory {
    Instant since = 0; // the present schedule came into force
    // Of the last backup that the helper started. A start without an end: it runs.
    std::optional<Instant> lastStart, lastEnd;
    std::optional<Instant> lastSucceeded;  // the end of the last one that succeeded
    Instant settled = 0;                   // every calendar moment up to and including this one is dealt with
    std::optional<Instant> owed;           // due before the schedule or the zone changed, and not yet made up for
    std::optional<std::int64_t> timeOfDay; // local, kept by intervals of days and weeks; seconds, 0 to 86399
    std::int64_t failures = 0;             // in a row

    // Of a schedule that comes into force now, with nothing before.
    static Memory beginningAt(Instant now)
    {
        Memory memory;
        memory.since = now;
        memory.settled = now;
        return memory;
    }

    bool runs() const { return lastStart && !lastEnd; }
    bool operator==(const Memory&) const = default;
};

} // namespace scheduling
