#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace helper {

// What "tmutil status" tells of Time Machine.
struct TimeMachineStatus {
    // A backup is running, whoever started it: also one that only looks for its disk, tidies up after the copying, or
    // was told to stop and has not yet.
    bool isRunning = false;
    bool isStopping = false; // somebody has told it to
    std::string phase;       // "Copying"; empty when none is told

    bool operator==(const TimeMachineStatus&) const = default;

    // Whether the phase is the copying or one after it.
    bool isCopying() const;

    // nullopt when the output has no property list of a status.
    static std::optional<TimeMachineStatus> inOutput(std::string_view output);
};

} // namespace helper
