#pragma once

#include "helper/macos/timemachine/BackupOutcome.h"
#include "helper/macos/timemachine/TimeMachineTool.h"
#include "platform/BackupRunner.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace helper {

// Runs backups by Time Machine, which makes them in a program of its own: it is asked to begin one, and then how far it
// has come, until it has ended. What is remembered of the last one stands in a file, for whoever comes later.
class TimeMachineRunner final : public platform::BackupRunner {
public:
    struct Parts {
        TimeMachineTool tool;
        std::string file; // of what is remembered
        // What Time Machine remembers; nullopt when this program may not know.
        std::function<std::optional<BackupMemory>()> memory;
        std::chrono::milliseconds pause{10'000}; // between two questions
        // How long Time Machine may take to begin, and to remember what it has made.
        std::chrono::milliseconds patience{60'000};
    };

    TimeMachineRunner(Parts parts, std::shared_ptr<platform::Queue> queue, Handler handler);
    ~TimeMachineRunner() override;

    platform::Result<void> start(const platform::BackupJob& job) override;
    std::optional<std::string> running() const override;
    std::optional<platform::BackupEvent> lastEnd() const override;

private:
    struct State;
    const std::shared_ptr<State> _state;
};

} // namespace helper
