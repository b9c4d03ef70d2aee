#include "activity/model/BackupStatus.h"

#include "platform/Texts.h"
#include "protocol/BackupStatus.h"
#include "scheduling/InstantDate.h"

using platform::Dictionary;
using platform::textForKey;
using platform::textsOf;
using scheduling::instantOf;

namespace {

// The dictionaries among the elements.
std::vector<const Dictionary*> dictionariesOf(const Dictionary& reply, const char* key)
{
    std::vector<const Dictionary*> found;
    const auto* const array = reply.arrayForKey(key);
    for (std::size_t index = 0; array && index < array->size(); ++index) {
        if (const auto* const dictionary = (*array)[index].dictionary())
            found.push_back(dictionary);
    }
    return found;
}

} // namespace

ToldReasons ToldReasons::named(const std::vector<std::string>& names)
{
    ToldReasons reasons;
    for (const auto& name : names) {
        const auto reason = scheduling::Reasons::named(name);
        if (reason)
            reasons.known.addIf(true, *reason);
        else
            reasons.hasOthers = true;
    }
    return reasons;
}

BackupStatus BackupStatus::fromReply(const Dictionary& reply)
{
    BackupStatus status;
    status.now = instantOf(reply.find(BackupStatusKey::Now)).value_or(0);
    status.zone = textForKey(reply, BackupStatusKey::Zone);
    status.state = scheduling::stateNamed(textForKey(reply, BackupStatusKey::State));
    status.due = instantOf(reply.find(BackupStatusKey::Due));
    status.reasons = ToldReasons::named(textsOf(reply.arrayForKey(BackupStatusKey::Reasons)));
    status.lastStart = instantOf(reply.find(BackupStatusKey::LastStart));
    status.lastEnd = instantOf(reply.find(BackupStatusKey::LastEnd));
    status.lastSucceeded = instantOf(reply.find(BackupStatusKey::LastSucceeded));
    status.failures = reply.integerForKey(BackupStatusKey::Failures);
    status.program = textForKey(reply, BackupStatusKey::Program);
    status.notes = textsOf(reply.arrayForKey(BackupStatusKey::Notes));
    for (const auto* const moment : dictionariesOf(reply, BackupStatusKey::Upcoming)) {
        if (const auto at = instantOf(moment->find(BackupStatusKey::At)))
            status.upcoming.push_back({.at = *at,
                                       .suspended = moment->boolForKey(BackupStatusKey::Suspended),
                                       .shifted = moment->boolForKey(BackupStatusKey::Shifted),
                                       .repeated = moment->boolForKey(BackupStatusKey::Repeated)});
    }
    for (const auto* const entry : dictionariesOf(reply, BackupStatusKey::Journal)) {
        if (auto read = scheduling::JournalEntry::inDictionary(*entry))
            status.journal.push_back(std::move(*read));
    }
    return status;
}
