#pragma once

#include "platform/PropertyList.h"
#include "scheduling/Instant.h"
#include "scheduling/Reasons.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace scheduling {

// Something that happened, as the journal keeps it.
struct JournalEntry {
    Instant at = 0;
    std::string event; // "start", "end", "missed", "blocked"
    std::optional<Instant> due;
    std::optional<std::int64_t> count; // missed moments told as one
    std::vector<std::string> reasons;  // by the names of Reasons
    std::optional<bool> succeeded;
    std::string text; // a sentence for people

    bool operator==(const JournalEntry&) const = default;
    // By the keys of BackupStatusKey.
    platform::Dictionary dictionary() const;
    static std::optional<JournalEntry> inDictionary(const platform::Dictionary& dictionary);
};

} // namespace scheduling
