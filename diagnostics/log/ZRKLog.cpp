#include "diagnostics/log/ZRKLog.h"

#include "diagnostics/log/LogDateFormatter.h"
#include "diagnostics/log/ZRKQueue.h"
#include "platform/FileDescriptor.h"
#include "platform/Folder.h"
#include "platform/SystemInformation.h"
#include "platform/SystemLog.h"
#include "platform/Unicode.h"
#include "version/ZRKSystemVersionManager.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

bool ZRKLOG_UNIFIED = false;

namespace {

constexpr std::uint64_t rotationThreshold = 10'000'000;
constexpr std::size_t longestMessage = 16'000; // bytes; what is longer is cut

struct LogState {
    std::unique_ptr<platform::SystemLog> zrk_log;
    std::unique_ptr<platform::LegacyLog> _client;
    std::string _category;
    std::mutex _lock; // guards the two below and rotation
    platform::FileDescriptor _fd;
    std::uint64_t _length = 0;
};

// Never destroyed, since threads may still log while the process ends.
LogState& state()
{
    static auto& shared = *new LogState;
    return shared;
}

const std::shared_ptr<platform::Queue>& legacyQueue()
{
    static const auto& _queue = *new std::shared_ptr<platform::Queue>(ZRKQueueContextCreate("com.zerkolin.zrklog.asl"));
    return _queue;
}

// A message that cannot be formatted is still worth its format.
std::string messageText(std::string_view format, LogArguments arguments)
{
    return platform::shortened(platform::formatString(format, arguments).value_or(std::string(format)), longestMessage);
}

void report(std::string_view format, LogArguments arguments)
{
    platform::reportToDefaultLog(messageText(format, arguments));
}

std::string logPath(std::string_view suffix)
{
    return ZRKLogGetParentPath().append("/").append(state()._category).append(suffix);
}

int openLogFile(const std::string& path)
{
    return ::open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
}

void openLog()
{
    auto& log = state();
    log._length = 0;
    // Without the folder the file cannot be opened either, and that is reported.
    (void)platform::createFolder(ZRKLogGetParentPath());
    log._fd.reset(openLogFile(logPath(".log")));
    if (!log._fd) {
        report("Failed to open log file (%d).", {errno});
        return;
    }
    struct stat status{};
    if (::fstat(log._fd.get(), &status) != 0)
        report("Failed to stat log file (%d).", {errno});
    else
        log._length = static_cast<std::uint64_t>(status.st_size);
}

// Called with the lock held, as are the two below. Files that are not there are no failure, and none is of interest.
void rotate()
{
    const auto current = logPath(".log");
    const std::array old{logPath(".0.log"), logPath(".1.log"), logPath(".2.log"), logPath(".3.log"), logPath(".4.log")};
    ::unlink(old[4].c_str());
    ::unlink(old[3].c_str());
    (void)std::rename(old[2].c_str(), old[3].c_str());
    (void)std::rename(old[1].c_str(), old[2].c_str());
    (void)std::rename(old[0].c_str(), old[1].c_str());
    (void)std::rename(current.c_str(), old[0].c_str());
    state()._fd.reset();
    state()._fd.reset(openLogFile(current));
    state()._length = 0;
}

void appendNumber(std::string& out, int number)
{
    char digits[16];
    out.append(digits, std::to_chars(std::begin(digits), std::end(digits), number).ptr);
}

// The line of a message with its newline. nullopt when that was impossible, which is then reported.
std::optional<std::string> makeLine(const char* format, LogArguments arguments)
{
    if (!platform::isValidUTF8(format)) {
        report("Could not convert string '%{public}s'.", {format});
        return std::nullopt;
    }
    thread_local LogDateFormatter _formatter;
    std::string line;
    line.reserve(256);
    line.append(_formatter.text(std::time(nullptr))).append(" ").append(state()._category).append("[");
    appendNumber(line, platform::processIdentifier());
    line.append("] ");
    if (!platform::appendFormat(line, format, arguments)) {
        report("Could not format string '%{public}s'.", {format});
        return std::nullopt;
    }
    if (line.size() > longestMessage)
        line = platform::shortened(line, longestMessage);
    line.push_back('\n');
    if (!platform::isValidUTF8(line)) {
        report("Could not get data for string '%{public}@'.", {line});
        return std::nullopt;
    }
    return line;
}

} // namespace

void ZRKLogInit(const char* subsystem, const char* category)
{
    auto& log = state();
    ZRKLOG_UNIFIED = ZRKSystemVersionManager::sharedManager().runningAtLeast(2);
    if (ZRKLOG_UNIFIED)
        log.zrk_log = platform::SystemLog::create(subsystem, category);
    else
        log._client = platform::LegacyLog::open(subsystem);
    log._category = category;
    openLog();
}

void ZRKLogMessage(LogLevel level, const char* format, LogArguments arguments)
{
    if (ZRKLOG_UNIFIED)
        ZRKLogUnified(level, format, arguments);
    else if (level != LogLevelDebug)
        _ZRKLog(level, format, arguments);
    ZRKLogWithLevel2(level, format, arguments);
}

void ZRKLogUnified(LogLevel level, const char* format, LogArguments arguments)
{
    if (auto& log = state().zrk_log)
        log->message(level, messageText(format, arguments));
}

void _ZRKLog(int level, const std::string& format, LogArguments arguments)
{
    const auto message = messageText(format, arguments);
    const bool isError = (level & 0xFF) == LogLevelError;
    legacyQueue()->sync([&] {
        if (auto& client = state()._client)
            client->send(isError ? "Error" : "Warning", message);
    });
}

void _ZRKLogSync()
{
    legacyQueue()->sync([] { });
}

void ZRKLogWithLevel2(LogLevel, const char* format, LogArguments arguments)
{
    const auto line = makeLine(format, arguments);
    if (!line)
        return;
    auto& log = state();
    std::lock_guard guard(log._lock);
    if (!log._fd)
        return;
    if (log._length >= rotationThreshold)
        rotate();
    if (::write(log._fd.get(), line->data(), line->size()) < 0)
        report("Failed to write to log file (%d) '%{public}@'.", {errno, *line});
    else
        log._length += line->size();
}

std::string ZRKLogGetParentPath()
{
    constexpr const char* folder = "/Library/Logs/Brevane";
    if (platform::effectiveUserIdentifier() == 0 || platform::userIdentifier() == 0)
        return platform::systemPath(folder);
    return platform::homeDirectory() + folder;
}
