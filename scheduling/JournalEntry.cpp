#include "scheduling/JournalEntry.h"

#include "protocol/BackupStatus.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

namespace scheduling {

using platform::Dictionary;

namespace {

constexpr Instant referenceDate = 978'307'200; // 2001-01-01

constexpr std::array<std::string_view, 4> events{"start", "end", "missed", "blocked"};

} // namespace

platform::Date dateOf(Instant instant)
{
    return {static_cast<double>(instant - referenceDate)};
}

std::optional<Instant> instantOf(const platform::PropertyList* date)
{
    const auto* const found = date ? date->date() : nullptr;
    const double seconds = found ? found->secondsSinceReferenceDate : std::nan("");
    constexpr auto first = static_cast<double>(earliestInstant - referenceDate);
    constexpr auto last = static_cast<double>(latestInstant - referenceDate);
    if (!(seconds >= first && seconds <= last))
        return std::nullopt;
    return static_cast<Instant>(std::floor(seconds)) + referenceDate;
}

Dictionary JournalEntry::dictionary() const
{
    Dictionary dictionary{
        {BackupStatusKey::At, dateOf(at)}, {BackupStatusKey::Event, event}, {BackupStatusKey::Text, text}};
    if (due)
        dictionary.set(BackupStatusKey::Due, dateOf(*due));
    if (count)
        dictionary.set(BackupStatusKey::Count, *count);
    if (!reasons.empty())
        dictionary.set(BackupStatusKey::Reasons, platform::Array(reasons.begin(), reasons.end()));
    if (succeeded)
        dictionary.set(BackupStatusKey::Succeeded, *succeeded);
    return dictionary;
}

std::optional<JournalEntry> JournalEntry::inDictionary(const Dictionary& dictionary)
{
    const auto at = instantOf(dictionary.find(BackupStatusKey::At));
    const auto* const event = dictionary.stringForKey(BackupStatusKey::Event);
    const auto* const text = dictionary.stringForKey(BackupStatusKey::Text);
    if (!at || !event || !text || std::ranges::find(events, *event) == events.end())
        return std::nullopt;
    JournalEntry entry{.at = *at,
                       .event = *event,
                       .due = instantOf(dictionary.find(BackupStatusKey::Due)),
                       .count = {},
                       .reasons = {},
                       .succeeded = {},
                       .text = *text};
    if (dictionary.contains(BackupStatusKey::Count))
        entry.count = dictionary.integerForKey(BackupStatusKey::Count);
    if (dictionary.contains(BackupStatusKey::Succeeded))
        entry.succeeded = dictionary.boolForKey(BackupStatusKey::Succeeded);
    const auto* const reasons = dictionary.arrayForKey(BackupStatusKey::Reasons);
    for (const auto& each : reasons ? *reasons : platform::Array()) {
        if (const auto* const name = each.string())
            entry.reasons.push_back(*name);
    }
    return entry;
}

} // namespace scheduling
