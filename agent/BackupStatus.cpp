#include "agent/BackupStatus.h"

#include "platform/Texts.h"
#include "protocol/BackupStatus.h"
#include "scheduling/InstantDate.h"

#include <algorithm>

namespace agent {

using platform::Dictionary;
using platform::textForKey;
using platform::textsOf;
using scheduling::instantOf;

namespace {

void addMissed(BackupStatus& status, const Dictionary& entry)
{
    if (status.missed == 0) {
        status.lastMissed = instantOf(entry.find(BackupStatusKey::At));
        status.missedReasons = textsOf(entry.arrayForKey(BackupStatusKey::Reasons));
    }
    // Some are told as one.
    status.missed += std::max<std::int64_t>(entry.integerForKey(BackupStatusKey::Count), 1);
}

// The entries stand newest first.
void readJournal(BackupStatus& status, const platform::Array& journal)
{
    bool wasStarted = false;
    bool hasEnded = false;
    for (const auto& each : journal) {
        const auto* const entry = each.dictionary();
        const auto event = entry ? textForKey(*entry, BackupStatusKey::Event) : std::string();
        if (event == "missed" && !wasStarted)
            addMissed(status, *entry);
        if (event == "end" && !hasEnded && !entry->boolForKey(BackupStatusKey::Succeeded))
            status.failure = textForKey(*entry, BackupStatusKey::Text);
        wasStarted = wasStarted || event == "start" || event == "end";
        hasEnded = hasEnded || event == "end";
    }
}

} // namespace

std::optional<BackupStatus> BackupStatus::inReply(const Dictionary& reply)
{
    const auto now = instantOf(reply.find(BackupStatusKey::Now));
    const auto* const state = reply.stringForKey(BackupStatusKey::State);
    if (!now || !state)
        return std::nullopt;
    BackupStatus status;
    status.now = *now;
    status.isOn = *state != "off";
    status.reasons = textsOf(reply.arrayForKey(BackupStatusKey::Reasons));
    status.lastSucceeded = instantOf(reply.find(BackupStatusKey::LastSucceeded));
    status.lastEnd = instantOf(reply.find(BackupStatusKey::LastEnd));
    status.failures = reply.integerForKey(BackupStatusKey::Failures);
    if (const auto* const journal = reply.arrayForKey(BackupStatusKey::Journal))
        readJournal(status, *journal);
    return status;
}

} // namespace agent
