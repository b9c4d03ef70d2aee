#include "backupprogram/model/BackupTest.h"

#include "protocol/BackupStatus.h"
#include "scheduling/InstantDate.h"
#include "scheduling/JournalEntry.h"

using platform::Dictionary;
using scheduling::instantOf;
using scheduling::JournalEntry;

namespace {

// The newest end of a backup that is no older than the start.
std::optional<JournalEntry> endIn(const Dictionary& status, scheduling::Instant start)
{
    const auto* const journal = status.arrayForKey(BackupStatusKey::Journal);
    for (const auto& each : journal ? *journal : platform::Array()) {
        const auto entry = each.dictionary() ? JournalEntry::inDictionary(*each.dictionary()) : std::nullopt;
        if (entry && entry->event == "end")
            return entry->at >= start ? entry : std::nullopt;
    }
    return std::nullopt;
}

} // namespace

std::optional<BackupTestOutcome> BackupTest::outcomeIn(const Dictionary& status)
{
    const auto start = instantOf(status.find(BackupStatusKey::LastStart));
    if (!_start)
        _start = start;
    const auto end = instantOf(status.find(BackupStatusKey::LastEnd));
    const bool isOver = start && end && *end >= *start && _start;
    if (!isOver)
        return std::nullopt;
    const auto entry = endIn(status, *_start);
    const bool succeeded = instantOf(status.find(BackupStatusKey::LastSucceeded)) == end;
    return BackupTestOutcome{entry ? entry->succeeded.value_or(succeeded) : succeeded, entry ? entry->text : ""};
}
