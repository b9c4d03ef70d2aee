#include "helper/macos/timemachine/TimeMachinePrograms.h"

#include "diagnostics/log/ZRKLog.h"
#include "protocol/BackupProgram.h"

#include <cerrno>

namespace helper {

using platform::Dictionary;

TimeMachinePrograms::TimeMachinePrograms(TimeMachineTool tool, FullDiskAccess access) : _tool(std::move(tool))
{
    if (access != FullDiskAccess::Missing)
        return;
    _notes.push_back(FullDiskAccessNotice);
    ZRKLogMessage(LogLevelError, "%@", {_notes.back()});
}

Dictionary TimeMachinePrograms::reply()
{
    return {{BackupProgramKey::Program, identifier()}, {BackupProgramKey::Programs, platform::Array()}};
}

platform::Result<void> TimeMachinePrograms::choose(const Dictionary&, bool)
{
    return std::unexpected(platform::Error{platform::POSIXErrorDomain, ENOTSUP, {}, nullptr});
}

std::expected<platform::BackupJob, std::string> TimeMachinePrograms::job(const std::string& identifier) const
{
    if (!_tool.isThere())
        return std::unexpected("Time Machine's tool is not there.");
    return platform::BackupJob{
        .identifier = identifier, .commands = {_tool.startCommand()}, .environment = {}, .overdueAfter = {}};
}

bool TimeMachinePrograms::isSuccess(const std::string&, std::optional<int> status) const
{
    return status == 0;
}

} // namespace helper
