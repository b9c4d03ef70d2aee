#include "platform/linux/logtool/RecordSource.h"

#include "platform/linux/system/journal/JournalReader.h"
#include "platform/linux/system/journal/LogStore.h"
#include "platform/Root.h"

#include <cstdlib>
#include <cstring>

namespace logtool {

namespace {

using platform::JSONField;

std::expected<void, int> visitStore(const RecordVisitor& visit)
{
    constexpr std::size_t timestamp = FieldCount;
    constexpr std::size_t processID = FieldCount + 1;
    static constexpr auto keys = [] {
        std::array<std::string_view, FieldCount + 2> all{};
        std::ranges::copy(FieldNames, all.begin());
        all[timestamp] = "timestamp";
        all[processID] = "processID";
        return all;
    }();
    LogRecord record;
    return platform::readLogStore(platform::UnifiedStore, keys, [&](std::span<const JSONField> fields) {
        for (std::size_t field = 0; field < FieldCount; ++field)
            record.fields[field] = fields[field].kind == JSONField::Kind::String ? fields[field].text : "";
        record.timestamp = fields[timestamp].text;
        record.processID = std::atoll(std::string(fields[processID].text).c_str());
        visit(record);
    });
}

// Messages of other programs say only how urgent they are.
const char* typeOfPriority(const std::string& priority)
{
    switch (std::atoi(priority.c_str())) {
    case 0:
    case 1:
    case 2:
        return "Fault";
    case 3:
        return "Error";
    case 6:
        return "Info";
    case 7:
        return "Debug";
    default:
        return "Default";
    }
}

LogRecord recordOf(const platform::JournalReader& journal)
{
    LogRecord record;
    const auto microseconds = journal.microseconds();
    record.timestamp = platform::logTimestamp(
        {static_cast<std::time_t>(microseconds / 1'000'000), static_cast<long>(microseconds % 1'000'000) * 1000});
    record[Field::Subsystem] = journal.field("SUBSYSTEM").value_or("");
    record[Field::Category] = journal.field("CATEGORY").value_or("");
    record[Field::EventMessage] = journal.field("MESSAGE").value_or("");
    record[Field::MessageType] =
        journal.field("MESSAGE_TYPE").value_or(typeOfPriority(journal.field("PRIORITY").value_or("5")));
    record[Field::ProcessImagePath] = journal.field("_EXE").value_or("");
    record.processID = std::atoll(journal.field("_PID").value_or("0").c_str());
    return record;
}

std::unexpected<std::string> failure(int error)
{
    return std::unexpected<std::string>(std::strerror(error));
}

std::expected<void, std::string> visitJournal(const std::vector<std::string>& subsystems, const RecordVisitor& visit)
{
    auto journal = platform::JournalReader::open();
    if (!journal)
        return failure(journal.error());
    if (!journal->hasFiles())
        return std::unexpected("the journal has no file that this user may read");
    for (const auto& subsystem : subsystems) {
        if (const auto added = journal->addMatch("SUBSYSTEM", subsystem); !added)
            return failure(added.error());
    }
    for (;;) {
        const auto more = journal->next();
        if (!more)
            return failure(more.error());
        if (!*more)
            return {};
        visit(recordOf(*journal));
    }
}

} // namespace

std::expected<void, std::string> visitRecords(const std::vector<std::string>& subsystems, const RecordVisitor& visit)
{
    if (!platform::usesSandboxStore())
        return visitJournal(subsystems, visit);
    const auto visited = visitStore(visit);
    return visited ? std::expected<void, std::string>() : failure(visited.error());
}

} // namespace logtool
