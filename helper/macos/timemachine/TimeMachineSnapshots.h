#pragma once

#include "helper/macos/timemachine/TimeMachineTool.h"
#include "helper/snapshots/LocalSnapshots.h"

namespace helper {

// Local snapshots by Time Machine, which makes them of all volumes at once: they count as the root's. A snapshot's path
// is its date.
class TimeMachineSnapshots final : public LocalSnapshots {
public:
    explicit TimeMachineSnapshots(TimeMachineTool tool = TimeMachineTool()) : _tool(std::move(tool)) { }

    std::vector<std::string> volumesOf(const std::vector<std::string>&) const override { return {"/"}; }
    std::expected<Made, std::string> make(const std::string& volume) override;
    std::optional<std::string> identifierOf(const std::string& path) const override;
    std::expected<void, std::string> remove(const std::string& path) override;
    // The application reads the volumes itself on this system.
    platform::Result<platform::PropertyList> list(const std::string& volume) const override;

private:
    const TimeMachineTool _tool;
};

} // namespace helper
