#pragma once

#include "helper/macos/timemachine/TimeMachineStatus.h"

#include <expected>
#include <string>
#include <vector>

namespace helper {

// Time Machine, by the system's tool for it. Every call runs the tool and waits for it; none for longer than a few
// seconds, but the making and the removal of snapshots, which have two minutes. Failures are words without a full stop.
class TimeMachineTool {
public:
    template <class T>
    using Outcome = std::expected<T, std::string>;

    static constexpr const char* SystemPath = "/usr/bin/tmutil";

    explicit TimeMachineTool(std::string path = SystemPath) : _path(std::move(path)) { }

    bool isThere() const;
    // A backup as the system itself starts them: it begins unless one is running, and goes on without the command.
    std::vector<std::string> startCommand() const { return {_path, "startbackup", "--auto"}; }
    // Success when the start was asked for, which says nothing about the backup.
    Outcome<void> start(const std::vector<std::string>& command) const;
    Outcome<TimeMachineStatus> status() const;

    // Of all volumes that are backed up. The new snapshot's date.
    Outcome<std::string> makeSnapshot() const;
    Outcome<std::vector<std::string>> snapshotDates() const;
    // Never any other than that of the date.
    Outcome<void> removeSnapshot(const std::string& date) const;

private:
    std::string _path;
};

} // namespace helper
