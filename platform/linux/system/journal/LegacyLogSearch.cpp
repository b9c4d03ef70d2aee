#include "platform/LegacyLogSearch.h"

#include "platform/linux/system/journal/JournalReader.h"
#include "platform/linux/system/journal/LogStore.h"
#include "platform/Root.h"

namespace platform {

namespace {

std::optional<std::string> legacyText(const JSONField& field)
{
    return field.kind == JSONField::Kind::Absent ? std::nullopt : std::optional(std::string(field.text));
}

std::vector<LegacyLogMessage> searchLegacyStore(const std::string& sender)
{
    static constexpr std::string_view keys[] = {"Sender", "Time", "Message"};
    std::vector<LegacyLogMessage> found;
    // A store that cannot be read has nothing to find.
    static_cast<void>(readLogStore(LegacyStore, keys, [&](std::span<const JSONField> fields) {
        if (fields[0].isString(sender))
            found.push_back({legacyText(fields[1]), legacyText(fields[2])});
    }));
    return found;
}

std::vector<LegacyLogMessage> searchLegacyJournal(const std::string& sender)
{
    std::vector<LegacyLogMessage> found;
    auto journal = JournalReader::open();
    if (!journal || !journal->addMatch("SENDER", sender))
        return found;
    while (journal->next().value_or(false))
        found.push_back({journal->field("TIME"), journal->field("MESSAGE")});
    return found;
}

} // namespace

std::vector<LegacyLogMessage> searchLegacyLog(const std::string& sender)
{
    return usesSandboxStore() ? searchLegacyStore(sender) : searchLegacyJournal(sender);
}

} // namespace platform
