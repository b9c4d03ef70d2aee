#pragma once

#include "helper/enforcement/BackupPrograms.h"
#include "helper/macos/timemachine/FullDiskAccess.h"
#include "helper/macos/timemachine/TimeMachineTool.h"

namespace helper {

// The system's own backups: there is nothing to choose.
class TimeMachinePrograms final : public BackupPrograms {
public:
    // Whether there is Full Disk Access is found out here, and told in the log and by the notes.
    explicit TimeMachinePrograms(TimeMachineTool tool = TimeMachineTool(), FullDiskAccess access = fullDiskAccess());

    platform::Dictionary reply() override;
    platform::Result<void> choose(const platform::Dictionary& choice, bool isWithoutPassword) override;

    bool isReady() const override { return _tool.isThere(); }
    std::string identifier() const override { return "timemachine"; }
    std::string name() const override { return "Time Machine"; }
    bool preventsSleep() const override { return false; } // Time Machine sees to that itself
    std::vector<std::string> folders() const override { return {}; }

    std::vector<std::string> notes() const override { return _notes; }

    std::expected<platform::BackupJob, std::string> job(const std::string& identifier) const override;
    bool isSuccess(const std::string& program, std::optional<int> status) const override;

private:
    const TimeMachineTool _tool;
    std::vector<std::string> _notes;
};

} // namespace helper
