#pragma once

#include "platform/PropertyList.h"
#include "scheduling/InstantDate.h"
#include "scheduling/JournalEntry.h"
#include "scheduling/Reasons.h"

#include <cstddef>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace helper {

using scheduling::dateOf;
using scheduling::instantOf;
using scheduling::JournalEntry;

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

} // namespace helper
