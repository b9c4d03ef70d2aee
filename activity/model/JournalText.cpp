#include "activity/model/ActivityWords.h"
#include "activity/model/Filled.h"
#include "platform/Localization.h"

#include <optional>
#include <span>
#include <string_view>

using platform::localizedString;
using scheduling::Instant;
using scheduling::JournalEntry;

namespace {

std::string started(const JournalEntry& entry, MomentText& moments)
{
    if (!entry.due)
        return localizedString("Started a backup by hand.");
    return filled(localizedString("Started the backup of %@."), {moments.textOnDayOf(*entry.due, entry.at)});
}

// The start of a backup that ended, among what happened before; nothing when the journal does not reach so far back.
std::optional<Instant> startBefore(std::span<const JournalEntry> earlier)
{
    for (const auto& entry : earlier) {
        if (entry.event == "start")
            return entry.at;
        if (entry.event == "end")
            break;
    }
    return std::nullopt;
}

std::string ended(const JournalEntry& entry, std::span<const JournalEntry> earlier)
{
    if (entry.succeeded.value_or(false)) {
        const auto start = startBefore(earlier);
        if (!start)
            return localizedString("The backup succeeded.");
        return filled(localizedString("The backup succeeded; it took %@."), {MomentText::length(entry.at - *start)});
    }
    // Why, only the helper knows, in its own words.
    constexpr std::string_view beginning = "The backup failed: ";
    const std::string_view text = entry.text;
    if (!text.starts_with(beginning))
        return localizedString("The backup failed.");
    return filled(localizedString("The backup failed: %@"), {text.substr(beginning.size())});
}

std::string missed(const JournalEntry& entry, MomentText& moments)
{
    const auto due = moments.textOnDayOf(entry.due.value_or(entry.at), entry.at);
    const auto why = ActivityWords::reasons(ToldReasons::named(entry.reasons));
    if (entry.count)
        return filled(localizedString("Missed %@ backups, the last of them that of %@: %@."),
                      {std::to_string(*entry.count), due, why});
    return filled(localizedString("Missed the backup of %@: %@."), {due, why});
}

std::string sentenceOf(const JournalEntry& entry, std::span<const JournalEntry> earlier, MomentText& moments)
{
    if (entry.event == "start")
        return started(entry, moments);
    if (entry.event == "end")
        return ended(entry, earlier);
    if (entry.event == "missed")
        return missed(entry, moments);
    return filled(localizedString("Waiting to back up: %@."),
                  {ActivityWords::reasons(ToldReasons::named(entry.reasons))});
}

} // namespace

std::string journalText(const std::vector<JournalEntry>& journal, MomentText& moments)
{
    if (journal.empty())
        return localizedString("Nothing has happened yet.");
    std::string text;
    std::span<const JournalEntry> rest(journal);
    while (!rest.empty()) {
        const auto& entry = rest.front();
        rest = rest.subspan(1);
        text += (text.empty() ? "" : "\n") + moments.text(entry.at) + " – " + sentenceOf(entry, rest, moments);
    }
    return text;
}
