#include "platform/BackupRunner.h"

#include "helper/macos/timemachine/FullDiskAccess.h"
#include "helper/macos/timemachine/TimeMachineRunner.h"
#include "platform/Preferences.h"
#include "platform/SystemInformation.h"

namespace helper {

namespace {

std::optional<BackupMemory> memoryOfTimeMachine()
{
    if (const auto destinations = platform::preferenceValue("Destinations", "com.apple.TimeMachine"))
        return BackupMemory::inDestinations(*destinations);
    // There are no disks, or they may not be seen.
    return fullDiskAccess() == FullDiskAccess::Missing ? std::nullopt : std::optional<BackupMemory>(std::in_place);
}

} // namespace

} // namespace helper

namespace platform {

std::unique_ptr<BackupRunner> BackupRunner::create(std::shared_ptr<Queue> queue, Handler handler)
{
    return std::make_unique<helper::TimeMachineRunner>(
        helper::TimeMachineRunner::Parts{.tool = helper::TimeMachineTool(),
                                         .file = systemPath("/var/db/brevane/backup-run.plist"),
                                         .memory = helper::memoryOfTimeMachine},
        std::move(queue), std::move(handler));
}

} // namespace platform
