#include "helper/linux/installation/WrittenFiles.h"

#include "diagnostics/log/ZRKLog.h"
#include "platform/Root.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace helper {

namespace {

constexpr std::array settingsFiles{"com.zerkolin.brevane.scheduler.plist", "com.zerkolin.brevane.updates.plist",
                                   "com.zerkolin.brevane.rights.plist", "com.zerkolin.brevane.program.plist"};
constexpr std::array stateFiles{"state.plist", "snapshots.plist", "backup-job.plist", "backup-run.plist"};
constexpr std::array programNames{"scheduler", "application", "post-update"};

// The file, what was kept of it when it was damaged, and what an interrupted replacement left.
bool isFileOrRemainder(std::string_view file, std::string_view name)
{
    return name == file || name.starts_with(std::string(file) + ".damaged")
        || name.starts_with("." + std::string(file) + ".");
}

bool isSettingsFile(std::string_view name)
{
    return std::ranges::any_of(settingsFiles, [name](std::string_view file) { return isFileOrRemainder(file, name); });
}

// The program's log, or one that was rotated away.
bool isLogOf(std::string_view program, std::string_view name)
{
    if (!name.starts_with(program))
        return false;
    name.remove_prefix(program.size());
    return name == ".log"
        || (name.size() == 6 && name[0] == '.' && name.substr(2) == ".log" && name[1] >= '0' && name[1] <= '4');
}

// What is remembered of backups and snapshots.
bool isBackupState(std::string_view name)
{
    return std::ranges::any_of(stateFiles, [name](std::string_view file) { return isFileOrRemainder(file, name); });
}

bool isProductLog(std::string_view name)
{
    return std::ranges::any_of(programNames, [name](std::string_view program) { return isLogOf(program, name); });
}

bool isOwnLog(std::string_view name)
{
    return isLogOf(programNames[0], name);
}

void collect(const std::string& folder, bool (*isWritten)(std::string_view), std::vector<std::string>& files)
{
    std::error_code failure;
    for (std::filesystem::directory_iterator at(folder, failure), end; !failure && at != end; at.increment(failure)) {
        if (isWritten(at->path().filename().native()))
            files.push_back(at->path());
    }
}

} // namespace

std::vector<std::string> writtenFiles()
{
    std::vector<std::string> files;
    collect(platform::systemPath("/Library/Preferences"), isSettingsFile, files);
    collect(platform::systemPath("/var/db/brevane"), isBackupState, files);
    auto systemLogs = platform::systemPath("/Library/Logs/Brevane");
    collect(systemLogs, isProductLog, files);
    // One that runs as an ordinary user, in a sandbox, logs in that user's home, where the others' logs are the user's.
    if (auto logs = ZRKLogGetParentPath(); logs != systemLogs && logs.starts_with(platform::systemRoot() + "/"))
        collect(logs, isOwnLog, files);
    return files;
}

} // namespace helper
