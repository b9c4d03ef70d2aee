#include "platform/SystemLog.h"

#include "platform/FileDescriptor.h"
#include "platform/Folder.h"
#include "platform/linux/system/journal/JsonText.h"
#include "platform/linux/system/journal/LogStore.h"
#include "platform/ProgramPath.h"
#include "platform/Root.h"
#include "platform/SystemInformation.h"

// The messages' place in our sources says nothing to their readers.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <initializer_list>
#include <sys/stat.h>
#include <systemd/sd-journal.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace platform {

namespace {

constexpr std::uint8_t errorType = 16;

struct MessageType {
    const char* name;
    const char* journalPriority;
};

MessageType messageType(std::uint8_t type)
{
    switch (type) {
    case 1:
        return {"Info", "6"};
    case 2:
        return {"Debug", "7"};
    case errorType:
        return {"Error", "3"};
    case 17:
        return {"Fault", "2"};
    default:
        return {"Default", "5"};
    }
}

using Fields = std::initializer_list<std::pair<std::string_view, std::string_view>>;

void sendToJournal(Fields fields)
{
    std::vector<std::string> entries;
    for (const auto& [name, value] : fields)
        entries.push_back(std::string(name).append("=").append(validUTF8(value)));
    std::vector<iovec> parts;
    for (auto& entry : entries)
        parts.push_back({entry.data(), entry.size()});
    sd_journal_sendv(parts.data(), static_cast<int>(parts.size()));
}

void appendMember(std::string& out, std::string_view name, std::string_view value)
{
    out += out.empty() ? '{' : ',';
    appendJsonString(out, name);
    out += ':';
    appendJsonString(out, value);
}

// A file of JSON objects, one a line, which several processes append to. What it cannot take is lost, as in any log.
class StoreFile {
public:
    explicit StoreFile(const char* name)
    {
        auto folder = systemPath("/var/log");
        if (createFolder(folder))
            _file.reset(::open((folder + "/" + name).c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644));
    }

    // One write, so that the lines of several writers do not mix.
    void append(const std::string& line) const
    {
        if (_file && ::write(_file.get(), line.data(), line.size()) < 0)
            return;
    }

private:
    FileDescriptor _file;
};

std::string timestamp()
{
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return logTimestamp(now);
}

std::string unifiedRecord(std::uint8_t type, std::string_view subsystem, std::string_view category,
                          std::string_view text)
{
    std::string record;
    appendMember(record, "timestamp", timestamp());
    appendMember(record, "messageType", messageType(type).name);
    appendMember(record, "subsystem", subsystem);
    appendMember(record, "category", category);
    appendMember(record, "eventMessage", text);
    appendMember(record, "processImagePath", programPath());
    return record + ",\"processID\":" + std::to_string(processIdentifier()) + "}\n";
}

class StoreSystemLog final : public SystemLog {
public:
    StoreSystemLog(std::string subsystem, std::string category)
        : _subsystem(std::move(subsystem)),
          _category(std::move(category))
    {
    }

    void message(std::uint8_t type, std::string_view text) override
    {
        _file.append(unifiedRecord(type, _subsystem, _category, text));
    }

private:
    std::string _subsystem;
    std::string _category;
    StoreFile _file{UnifiedStore};
};

class JournalSystemLog final : public SystemLog {
public:
    JournalSystemLog(std::string subsystem, std::string category)
        : _subsystem(std::move(subsystem)),
          _category(std::move(category))
    {
    }

    void message(std::uint8_t type, std::string_view text) override
    {
        auto [name, priority] = messageType(type);
        sendToJournal({{"MESSAGE", text},
                       {"PRIORITY", priority},
                       {"MESSAGE_TYPE", name},
                       {"SUBSYSTEM", _subsystem},
                       {"CATEGORY", _category},
                       {"SYSLOG_IDENTIFIER", program_invocation_short_name}});
    }

private:
    std::string _subsystem;
    std::string _category;
};

class StoreLegacyLog final : public LegacyLog {
public:
    explicit StoreLegacyLog(std::string facility) : _facility(std::move(facility)) { }

    void send(std::string_view level, std::string_view message) override
    {
        std::string record;
        appendMember(record, "Time", std::to_string(::time(nullptr)));
        appendMember(record, "Sender", program_invocation_short_name);
        appendMember(record, "Facility", _facility);
        appendMember(record, "Level", level);
        appendMember(record, "Message", message);
        _file.append(record + "}\n");
    }

private:
    std::string _facility;
    StoreFile _file{LegacyStore};
};

class JournalLegacyLog final : public LegacyLog {
public:
    explicit JournalLegacyLog(std::string facility) : _facility(std::move(facility)) { }

    void send(std::string_view level, std::string_view message) override
    {
        sendToJournal({{"MESSAGE", message},
                       {"PRIORITY", level == "Error" ? "3" : "4"},
                       {"TIME", std::to_string(::time(nullptr))},
                       {"SENDER", program_invocation_short_name},
                       {"FACILITY", _facility},
                       {"LEVEL", level},
                       {"SYSLOG_IDENTIFIER", program_invocation_short_name}});
    }

private:
    std::string _facility;
};

// Whether what is written to standard error ends up in the journal. systemd names the file that it has connected.
bool isErrorOutputJournal()
{
    const char* const stream = std::getenv("JOURNAL_STREAM");
    unsigned long long device = 0;
    unsigned long long inode = 0;
    struct stat status{};
    return stream && std::sscanf(stream, "%llu:%llu", &device, &inode) == 2 && ::fstat(STDERR_FILENO, &status) == 0
        && status.st_dev == device && status.st_ino == inode;
}

} // namespace

std::unique_ptr<SystemLog> SystemLog::create(const std::string& subsystem, const std::string& category)
{
    if (usesSandboxStore())
        return std::make_unique<StoreSystemLog>(subsystem, category);
    return std::make_unique<JournalSystemLog>(subsystem, category);
}

void reportToDefaultLog(std::string_view text)
{
    const bool usesJournal = !usesSandboxStore();
    if (!usesJournal)
        StoreFile(UnifiedStore).append(unifiedRecord(errorType, {}, {}, text));
    else {
        auto [name, priority] = messageType(errorType);
        sendToJournal({{"MESSAGE", text},
                       {"PRIORITY", priority},
                       {"MESSAGE_TYPE", name},
                       {"SYSLOG_IDENTIFIER", program_invocation_short_name}});
    }
    if (usesJournal && isErrorOutputJournal())
        return;
    auto line = std::string(text) + "\n";
    if (::write(STDERR_FILENO, line.data(), line.size()) < 0)
        return;
}

std::unique_ptr<LegacyLog> LegacyLog::open(const std::string& facility)
{
    if (usesSandboxStore())
        return std::make_unique<StoreLegacyLog>(facility);
    return std::make_unique<JournalLegacyLog>(facility);
}

} // namespace platform
