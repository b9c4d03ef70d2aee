#include "helper/linux/backupd/BackupLog.h"

#include "version/ZRKSystemVersionManager.h"

#include <algorithm>
#include <errno.h>

namespace helper {

namespace {

// The version from which the system has one log for all.
constexpr int UnifiedLogVersion = 2;

} // namespace

BackupLog::BackupLog()
{
    static char sender[] = "com.apple.backupd";
    program_invocation_short_name = sender; // the older log tells senders by it
    if (ZRKSystemVersionManager::sharedManager().runningAtLeast(UnifiedLogVersion))
        _log = platform::SystemLog::create("com.apple.TimeMachine", "General");
    else
        _legacyLog = platform::LegacyLog::open(sender);
}

void BackupLog::message(std::uint8_t type, std::string_view text)
{
    if (_log)
        _log->message(type, text);
    else
        _legacyLog->send(type == Error ? "Error" : "Warning", text);
}

void OutputLines::add(std::string_view bytes)
{
    while (!bytes.empty()) {
        // Programs that show their progress write over the same line again.
        const auto end = std::min(bytes.find_first_of("\n\r"), bytes.size());
        const auto room = MaximumLineSize - std::min(MaximumLineSize, _line.size());
        _line.append(bytes.substr(0, std::min(end, room)));
        if (end == bytes.size())
            return;
        endLine();
        bytes.remove_prefix(end + 1);
    }
}

void OutputLines::endLine()
{
    if (_line.empty())
        return;
    if (++_count <= FirstLines) {
        _log.message(BackupLog::Default, _line);
    } else {
        _last.push_back(std::move(_line));
        if (_last.size() > LastLines)
            _last.pop_front();
    }
    _line.clear();
}

void OutputLines::finish()
{
    endLine();
    if (const auto omitted = _count - std::min(_count, FirstLines) - _last.size(); omitted > 0)
        _log.message(BackupLog::Default, "(" + std::to_string(omitted) + " lines left out)");
    for (const auto& line : _last)
        _log.message(BackupLog::Default, line);
    _last.clear();
    _count = 0;
}

} // namespace helper
