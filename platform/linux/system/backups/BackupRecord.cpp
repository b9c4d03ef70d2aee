#include "platform/linux/system/backups/BackupRecord.h"

#include "platform/AtomicFile.h"
#include "platform/Folder.h"
#include "platform/PropertyListCoding.h"
#include "platform/SystemInformation.h"
#include "platform/Texts.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <string_view>

namespace platform {

namespace {

constexpr const char* JobName = "backup-job.plist";
constexpr mode_t privateMode = 0600; // arguments are nobody's business

std::string pathOf(const char* name)
{
    return systemPath(BackupStateFolder) + "/" + name;
}

std::expected<void, int> write(const char* name, const Data& bytes)
{
    if (const auto folder = createFolder(systemPath(BackupStateFolder)); !folder)
        return folder;
    return replaceFile(pathOf(name), bytes, privateMode);
}

std::optional<Dictionary> decoded(std::span<const std::uint8_t> bytes)
{
    auto value = propertyListWithData(bytes);
    return value && value->dictionary() ? std::optional(std::move(*value->dictionary())) : std::nullopt;
}

} // namespace

Data encodedBackupJob(const BackupJob& job)
{
    Array commands;
    for (const auto& command : job.commands)
        commands.emplace_back(arrayOf(command));
    Dictionary content{
        {"Identifier", job.identifier}, {"Commands", std::move(commands)}, {"Environment", arrayOf(job.environment)}};
    if (!job.confinedTo.empty())
        content.set("ConfinedTo", arrayOf(job.confinedTo));
    if (job.overdueAfter)
        content.set("OverdueAfter", static_cast<std::int64_t>(job.overdueAfter->count()));
    if (job.beginBefore)
        content.set("BeginBefore", static_cast<std::int64_t>(job.beginBefore->count()));
    return binaryPropertyList(content).value_or(Data());
}

std::expected<void, int> writeBackupJob(const BackupJob& job)
{
    return write(JobName, encodedBackupJob(job));
}

std::optional<BackupJob> readBackupJob()
{
    const auto bytes = readFile(pathOf(JobName));
    return bytes ? decodedBackupJob(*bytes) : std::nullopt;
}

std::optional<BackupJob> decodedBackupJob(std::span<const std::uint8_t> bytes)
{
    const auto content = decoded(bytes);
    const auto* const identifier = content ? content->stringForKey("Identifier") : nullptr;
    const auto* const commands = content ? content->arrayForKey("Commands") : nullptr;
    if (!identifier || !commands)
        return std::nullopt;
    BackupJob job{.identifier = *identifier,
                  .commands = {},
                  .environment = textsOf(content->arrayForKey("Environment")),
                  .overdueAfter = {},
                  .confinedTo = textsOf(content->arrayForKey("ConfinedTo"))};
    for (const auto& command : *commands)
        job.commands.push_back(textsOf(command.array()));
    if (content->contains("OverdueAfter"))
        job.overdueAfter = std::chrono::seconds(content->integerForKey("OverdueAfter"));
    if (content->contains("BeginBefore"))
        job.beginBefore = std::chrono::nanoseconds(content->integerForKey("BeginBefore"));
    const bool isWhole = std::ranges::none_of(job.commands, [](const auto& command) { return command.empty(); });
    return isWhole ? std::optional(std::move(job)) : std::nullopt;
}

std::expected<void, int> writeBackupRecord(const BackupRecord& record)
{
    Dictionary content{{"Identifier", record.identifier},
                       {"Process", record.process},
                       {"ProcessStart", static_cast<std::int64_t>(record.processStart)},
                       {"Began", record.began}};
    if (record.status)
        content.set("Status", *record.status);
    return write(BackupRecordName, binaryPropertyList(content).value_or(Data()));
}

std::optional<BackupRecord> readBackupRecord()
{
    const auto bytes = readFile(pathOf(BackupRecordName));
    const auto content = bytes ? decoded(*bytes) : std::nullopt;
    const auto* const identifier = content ? content->stringForKey("Identifier") : nullptr;
    if (!identifier)
        return std::nullopt;
    BackupRecord record{.identifier = *identifier,
                        .process = static_cast<pid_t>(content->integerForKey("Process")),
                        .processStart = static_cast<std::uint64_t>(content->integerForKey("ProcessStart")),
                        .began = content->integerForKey("Began"),
                        .status = {}};
    if (content->contains("Status"))
        record.status = static_cast<int>(content->integerForKey("Status"));
    return record;
}

std::string lineOfBegin(pid_t process, std::uint64_t processStart)
{
    return "began " + std::to_string(process) + " " + std::to_string(processStart) + "\n";
}

std::string lineOfEnd(int status)
{
    return "ended " + std::to_string(status) + "\n";
}

std::uint64_t startOfProcess(pid_t process)
{
    const auto bytes = readFile("/proc/" + std::to_string(process) + "/stat");
    const std::string text = bytes ? std::string(bytes->begin(), bytes->end()) : std::string();
    // The name in parentheses may hold anything; the state after it is field 3, the start field 22.
    auto at = text.rfind(')');
    for (int field = 2; field < 22 && at != std::string::npos; ++field)
        at = text.find(' ', at + 1);
    std::uint64_t start = 0;
    if (at != std::string::npos)
        std::from_chars(text.data() + at + 1, text.data() + text.size(), start);
    return start;
}

} // namespace platform
