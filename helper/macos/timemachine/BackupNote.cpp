#include "helper/macos/timemachine/BackupNote.h"

#include "platform/Texts.h"
#include "scheduling/InstantDate.h"

namespace helper {

using platform::Dictionary;
using scheduling::dateOf;
using scheduling::instantOf;

Dictionary BackupNote::dictionary() const
{
    Dictionary dictionary{{"Identifier", identifier},         {"Began", dateOf(trace.began)},
                          {"WasRunning", trace.wasRunning},   {"WasCopying", trace.wasCopying},
                          {"WasStopping", trace.wasStopping}, {"Ended", hasEnded},
                          {"Reason", outcome.reason}};
    if (trace.newestBefore)
        dictionary.set("NewestBefore", dateOf(*trace.newestBefore));
    if (outcome.status)
        dictionary.set("Status", *outcome.status);
    return dictionary;
}

std::optional<BackupNote> BackupNote::inDictionary(const Dictionary& dictionary)
{
    const auto* const identifier = dictionary.stringForKey("Identifier");
    const auto began = instantOf(dictionary.find("Began"));
    if (!identifier || !began)
        return std::nullopt;
    BackupNote note{.identifier = *identifier,
                    .trace = {.began = *began,
                              .newestBefore = instantOf(dictionary.find("NewestBefore")),
                              .wasRunning = dictionary.boolForKey("WasRunning"),
                              .wasCopying = dictionary.boolForKey("WasCopying"),
                              .wasStopping = dictionary.boolForKey("WasStopping")},
                    .hasEnded = dictionary.boolForKey("Ended"),
                    .outcome = {.status = {}, .reason = platform::textForKey(dictionary, "Reason")}};
    if (dictionary.contains("Status"))
        note.outcome.status = static_cast<int>(dictionary.integerForKey("Status"));
    return note;
}

} // namespace helper
