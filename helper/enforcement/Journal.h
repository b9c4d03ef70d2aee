#pragma once

#include "platform/PropertyList.h"
#include "scheduling/Instant.h"
#include "scheduling/InstantDate.h"
#include "scheduling/Reasons.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace helper {

// Something that happened, as the journal keeps it.
struct JournalEntry {
    scheduling::Instant at = 0;
    std::string event; // "start", "end", "missed", "blocked"
    std::optional<scheduling::Instant> due;
    std::optional<std::int64_t> count; // missed moments told as one
    std::vector<std::string> reasons;  // by the names of scheduling::Reasons
    std::optional<bool> succeeded;
    std::string text; // a sentence for people

    bool operator==(const JournalEntry&) const = default;
    platform::Dictionary dictionary() const;
    static std::optional<JournalEntry> inDictionary(const platform::Dictionary& dictionary);
};

std::vector<std::string> namesOf(const scheduling::Reasons& reasons);

// What happened last.
class Journal {
public:
    static constexpr std::size_t MaximumCount = 500;

    void add(JournalEntry entry);
    const std::deque<JournalEntry>& entries() const { return _entries; } // newest first

    platform::Array array() const; // newest first
    static std::optional<Journal> inArray(const platform::Array& array);

    bool operator==(const Journal&) const = default;

private:
    std::deque<JournalEntry> _entries;
};

using scheduling::dateOf;
using scheduling::instantOf;

} // namespace helper
