#include "helper/macos/timemachine/TimeMachineTool.h"

#include "helper/macos/commands/Command.h"
#include "helper/macos/timemachine/FullDiskAccess.h"
#include "helper/macos/timemachine/SnapshotNames.h"

#include <unistd.h>

namespace helper {

namespace {

constexpr std::chrono::seconds answerLimit{5};
constexpr std::chrono::seconds startLimit{30};
constexpr std::chrono::seconds snapshotLimit{120};

// What the command wrote, if it succeeded.
TimeMachineTool::Outcome<std::string> answerOf(const std::vector<std::string>& command, std::chrono::seconds limit)
{
    auto end = runCommand(command, limit);
    if (asksForFullDiskAccess(end.output))
        return std::unexpected(FullDiskAccessMissing);
    if (!end.isSuccess())
        return std::unexpected(failureOfCommand(command, end));
    return std::move(end.output);
}

} // namespace

bool TimeMachineTool::isThere() const
{
    return ::access(_path.c_str(), X_OK) == 0;
}

TimeMachineTool::Outcome<void> TimeMachineTool::start(const std::vector<std::string>& command) const
{
    return successOf(answerOf(command, startLimit));
}

TimeMachineTool::Outcome<TimeMachineStatus> TimeMachineTool::status() const
{
    const auto output = answerOf({_path, "status"}, answerLimit);
    if (!output)
        return std::unexpected(output.error());
    auto status = TimeMachineStatus::inOutput(*output);
    if (!status)
        return std::unexpected("tmutil's answer is not understood");
    return *status;
}

TimeMachineTool::Outcome<std::string> TimeMachineTool::makeSnapshot() const
{
    const auto output = answerOf({_path, "localsnapshot"}, snapshotLimit);
    if (!output)
        return std::unexpected(output.error());
    auto date = dateOfMadeSnapshot(*output);
    if (!date)
        return std::unexpected("tmutil did not say which snapshot it has made");
    return *date;
}

TimeMachineTool::Outcome<std::vector<std::string>> TimeMachineTool::snapshotDates() const
{
    const auto output = answerOf({_path, "listlocalsnapshots", "/"}, snapshotLimit);
    if (!output)
        return std::unexpected(output.error());
    return snapshotDatesInListing(*output);
}

TimeMachineTool::Outcome<void> TimeMachineTool::removeSnapshot(const std::string& date) const
{
    // In place of a date the command takes a volume, and removes all that is on it.
    if (!isSnapshotDate(date))
        return std::unexpected("'" + date + "' is no date of a snapshot");
    return successOf(answerOf({_path, "deletelocalsnapshots", date}, snapshotLimit));
}

} // namespace helper
