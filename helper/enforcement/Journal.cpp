#include "helper/enforcement/Journal.h"

namespace helper {

std::vector<std::string> namesOf(const scheduling::Reasons& reasons)
{
    const auto names = reasons.names();
    return {names.begin(), names.end()};
}

void Journal::add(JournalEntry entry)
{
    _entries.push_front(std::move(entry));
    if (_entries.size() > MaximumCount)
        _entries.pop_back();
}

platform::Array Journal::array() const
{
    platform::Array array;
    array.reserve(_entries.size());
    for (const auto& entry : _entries)
        array.emplace_back(entry.dictionary());
    return array;
}

std::optional<Journal> Journal::inArray(const platform::Array& array)
{
    Journal journal;
    for (const auto& each : array) {
        auto entry = each.dictionary() ? JournalEntry::inDictionary(*each.dictionary()) : std::nullopt;
        if (!entry)
            return std::nullopt;
        if (journal._entries.size() < MaximumCount)
            journal._entries.push_back(std::move(*entry));
    }
    return journal;
}

} // namespace helper
