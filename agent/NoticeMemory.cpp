#include "agent/NoticeMemory.h"

#include "scheduling/InstantDate.h"

#include <algorithm>

namespace agent {

using platform::Dictionary;
using scheduling::dateOf;
using scheduling::Instant;
using scheduling::instantOf;

namespace {

const char* nameOf(Cause cause)
{
    switch (cause) {
    case Cause::Failing:
        return "Failing";
    case Cause::Missed:
        return "Missed";
    case Cause::Stale:
        return "Stale";
    }
    return "";
}

} // namespace

void NoticeMemory::observe(const BackupStatus& status)
{
    for (auto& [cause, notice] : told)
        notice.at = std::min(notice.at, status.now);
    if (onSince)
        onSince = std::min(*onSince, status.now);
    if (!status.isOn)
        onSince.reset();
    else if (wasOff || (!onSince && !status.lastSucceeded))
        onSince = status.now;
    wasOff = !status.isOn;
}

void NoticeMemory::tell(const Notice& notice, Instant now)
{
    told[notice.cause] = {now, notice.event};
}

Dictionary NoticeMemory::dictionary() const
{
    Dictionary dictionary{{"WasOff", wasOff}};
    if (onSince)
        dictionary.set("OnSince", dateOf(*onSince));
    for (const auto& [cause, notice] : told) {
        Dictionary entry{{"At", dateOf(notice.at)}};
        if (notice.event)
            entry.set("Event", dateOf(*notice.event));
        dictionary.set(nameOf(cause), std::move(entry));
    }
    return dictionary;
}

NoticeMemory NoticeMemory::inDictionary(const Dictionary& dictionary)
{
    NoticeMemory memory;
    memory.wasOff = dictionary.boolForKey("WasOff");
    memory.onSince = instantOf(dictionary.find("OnSince"));
    for (const auto cause : everyCause) {
        const auto* const entry = dictionary.dictionaryForKey(nameOf(cause));
        if (const auto at = entry ? instantOf(entry->find("At")) : std::nullopt)
            memory.told[cause] = {*at, instantOf(entry->find("Event"))};
    }
    return memory;
}

} // namespace agent
