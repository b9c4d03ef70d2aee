#include "diagnostics/console/BRVConsoleController.h"
#include "diagnostics/console/LogLineWriter.h"
#include "diagnostics/log/ZRKLog.h"
#include "platform/DateFormat.h"
#include "platform/JSONRecords.h"
#include "platform/LegacyLogSearch.h"
#include "platform/Localization.h"
#include "platform/Process.h"
#include "platform/SystemInformation.h"
#include "version/ZRKSystemVersionManager.h"

#include <array>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>
#include <utility>

using namespace platform;

namespace {

constexpr const char* logTool = "/usr/bin/log";
constexpr const char* logPredicate =
    "(subsystem == \"com.zerkolin.brevane\") || "
    "((subsystem == \"com.apple.TimeMachine\") && (processImagePath endswith \"backupd\"))";
constexpr std::size_t chunkSize = 2048;
constexpr const char* legacyBackupSender = "com.apple.backupd";

void readOutput(Process& tool, JSONRecords& records)
{
    std::array<char, chunkSize> chunk;
    while (const auto count = tool.read(chunk))
        records.append({chunk.data(), count});
    tool.closeOutput();
    tool.waitUntilExit();
}

// A text that grows is there twice each time that it moves. Memory that nobody has touched costs nothing, so a long one
// gets plenty, once.
class RoomForLongText {
public:
    void makeFor(StyledText& text)
    {
        if (_isMade || text.size() < longText)
            return;
        _isMade = true;
        try {
            text.reserve(plenty);
        } catch (const std::bad_alloc&) {
            // Then it grows as others do.
        }
    }

private:
    static constexpr std::size_t longText = std::size_t(4) << 20;
    static constexpr std::size_t plenty = std::size_t(256) << 20;
    bool _isMade = false;
};

// A tool that may not read the log prints nothing.
std::string unreadableLog(const JSONRecords& records, const std::string& reason)
{
    const auto cause = records.isEmpty() ? localizedString("This account may not be allowed to read it.") : reason;
    return localizedString("The log could not be read.") + "\n" + cause;
}

Color named(NamedColor color, const FixedColor& earlier)
{
    return ZRKSystemVersionManager::sharedManager().runningAtLeast(4) ? Color(color) : Color(earlier);
}

TextAttributes fixedPitch(const Color& color)
{
    return {.font = TextFont::UserFixedPitch, .foreground = color};
}

bool startsBackup(const std::string& message)
{
    return message == "Starting automatic backup" || message == "Starting manual backup";
}

} // namespace

StyledText BRVConsoleController::fetchLog(LogFetch& fetch)
{
    auto started = Process::start(systemPath(logTool),
                                  {"show", "--debug", "--info", "--predicate", logPredicate, "--style", "json"});
    if (!started) {
        fetch.failure = localizedString("The log could not be read.");
        return {};
    }
    const std::shared_ptr<Process> tool = std::move(*started);
    fetch.setTool(tool);
    StyledText text;
    RoomForLongText room;
    LogLineWriter writer({.plain = fixedPitch(NamedColor::Text),
                          .blue = fixedPitch(blueColor()),
                          .green = fixedPitch(greenColor()),
                          .orange = fixedPitch(orangeColor()),
                          .red = fixedPitch(redColor())});
    JSONRecords records(LogLineWriter::Keys, [&](std::span<const JSONField> fields) {
        writer.append(text, fields);
        room.makeFor(text);
    });
    readOutput(*tool, records);
    const auto read = records.finish();
    if (read && !fetch.isStopped())
        return text;
    if (!fetch.isStopped()) {
        const auto reason = localizedDescription(read.error());
        ZRKLogMessage(LogLevelError, "Failed to read logs. %@", {reason});
        fetch.failure = unreadableLog(records, reason);
    }
    return {};
}

StyledText BRVConsoleController::fetchASL()
{
    static auto printer = DateFormat::withStyles(DateStyle::Short, DateStyle::Medium);
    StyledText text;
    for (const auto& [time, message] : searchLegacyLog(legacyBackupSender)) {
        const auto date = printer.stringFromDate(std::strtod(time.value_or("").c_str(), nullptr));
        const bool setApart = !text.empty() && message && startsBackup(*message);
        text.appendAttributes({}, setApart ? "\n%@: %s\n" : "%@: %s\n", {date, message ? message->c_str() : nullptr});
    }
    return text;
}

Color BRVConsoleController::blueColor()
{
    return named(NamedColor::SystemBlue, {0, 0, 1});
}

Color BRVConsoleController::greenColor()
{
    return named(NamedColor::SystemGreen, {0, 0.58, 0});
}

Color BRVConsoleController::orangeColor()
{
    return named(NamedColor::SystemOrange, {0.81, 0.41, 0});
}

Color BRVConsoleController::redColor()
{
    return named(NamedColor::SystemRed, {0.96, 0, 0});
}
