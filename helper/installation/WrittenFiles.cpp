#include "helper/installation/WrittenFiles.h"

#include "diagnostics/log/ZRKLog.h"
#include "platform/linux/system/Root.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <string_view>

namespace {

constexpr std::array settingsFiles{"com.zerkolin.brevane.scheduler.plist", "com.zerkolin.brevane.updates.plist",
                                   "com.zerkolin.brevane.rights.plist"};
constexpr std::array logFiles{"scheduler.log",   "scheduler.0.log", "scheduler.1.log",
                              "scheduler.2.log", "scheduler.3.log", "scheduler.4.log"};

// The file, what was kept of it when it was damaged, and what an interrupted replacement left.
bool isSettingsFile(std::string_view name)
{
    return std::ranges::any_of(settingsFiles, [&](std::string_view file) {
        return name == file || name.starts_with(std::string(file) + ".damaged")
            || name.starts_with("." + std::string(file) + ".");
    });
}

bool isLogFile(std::string_view name)
{
    return std::ranges::find(logFiles, name) != logFiles.end();
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
    // Those of a program that runs as an ordinary user are in that user's home.
    if (auto logs = ZRKLogGetParentPath(); logs.starts_with(platform::systemRoot() + "/"))
        collect(logs, isLogFile, files);
    return files;
}
