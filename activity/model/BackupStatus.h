#pragma once

#include "platform/PropertyList.h"
#include "scheduling/Instant.h"
#include "scheduling/JournalEntry.h"
#include "scheduling/Look.h"
#include "scheduling/Reasons.h"
#include "scheduling/Upcoming.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// What stands in the way of a backup, as it was told.
struct ToldReasons {
    scheduling::Reasons known;
    bool hasOthers = false; // that only a newer version has a name for

    static ToldReasons named(const std::vector<std::string>& names);

    bool empty() const { return known.empty() && !hasOthers; }
    bool operator==(const ToldReasons&) const = default;
};

// The scheduler helper's answer about backups, read once: what is missing or of another type is absent, and entries
// without an instant are left out.
struct BackupStatus {
    scheduling::Instant now = 0;            // when it was told
    std::string zone;                       // IANA name
    std::optional<scheduling::State> state; // nullopt for one that only a newer version has
    std::optional<scheduling::Instant> due; // now or to come; nullopt when it is not known
    ToldReasons reasons;
    // Of the last backup that the helper started. A start without an end: it runs.
    std::optional<scheduling::Instant> lastStart, lastEnd;
    std::optional<scheduling::Instant> lastSucceeded; // the end of the last one that succeeded
    std::int64_t failures = 0;                        // in a row
    std::string program;                              // as a person reads it; empty when none is chosen
    std::vector<std::string> notes;                   // sentences in English
    std::vector<scheduling::Upcoming> upcoming;       // earliest first
    std::vector<scheduling::JournalEntry> journal;    // newest first

    static BackupStatus fromReply(const platform::Dictionary& reply);

    bool runs() const { return state == scheduling::State::Running; }
};
