#pragma once

#include "platform/PropertyList.h"
#include "scheduling/Instant.h"

#include <cstdint>
#include <optional>
#include <string>

namespace helper {

// What Time Machine's settings remember of its backups.
struct BackupMemory {
    std::optional<scheduling::Instant> newest; // the last one that was made, on whichever disk
    std::int64_t result = 0;                   // how the last attempt ended; 0: well

    bool operator==(const BackupMemory&) const = default;

    // Of the value of "Destinations"; nullopt when it is none.
    static std::optional<BackupMemory> inDestinations(const platform::PropertyList& destinations);
};

// What was seen of a backup while it ran.
struct BackupTrace {
    scheduling::Instant began = 0;
    std::optional<scheduling::Instant> newestBefore;
    bool wasRunning = false;
    bool wasCopying = false;  // or further
    bool wasStopping = false; // somebody has told it to

    bool operator==(const BackupTrace&) const = default;
};

// How a backup came out.
struct BackupOutcome {
    std::optional<int> status; // 0: a backup was made. nullopt: nobody knows why it was not
    std::string reason;        // in words with a full stop; empty when the status is 0 or nullopt

    bool operator==(const BackupOutcome&) const = default;

    // Without the memory, for want of access to it, one that was copying until its end and that nobody stopped is taken
    // for a success.
    static BackupOutcome of(const BackupTrace& trace, const std::optional<BackupMemory>& after);
};

} // namespace helper
