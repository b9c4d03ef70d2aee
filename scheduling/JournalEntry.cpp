#include "scheduling/JournalEntry.h"

#include "platform/Texts.h"
#include "protocol/BackupStatus.h"
#include "scheduling/InstantDate.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace scheduling {

using platform::Dictionary;

namespace {

constexpr std::array<std::string_view, 4> events{"start", "end", "missed", "blocked"};

} // namespace

Dictionary JournalEntry::dictionary() const
{
    Dictionary dictionary{
        {BackupStatusKey::At, dateOf(at)}, {BackupStatusKey::Event, event}, {BackupStatusKey::Text, text}};
    if (due)
        dictionary.set(BackupStatusKey::Due, dateOf(*due));
    if (count)
        dictionary.set(BackupStatusKey::Count, *count);
    if (!reasons.empty())
        dictionary.set(BackupStatusKey::Reasons, platform::arrayOf(reasons));
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
    entry.reasons = platform::textsOf(dictionary.arrayForKey(BackupStatusKey::Reasons));
    return entry;
}

} // namespace scheduling
