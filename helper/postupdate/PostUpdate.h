#pragma once

#include "helper/update/VersionNumber.h"
#include "platform/FileDescriptor.h"

#include <chrono>
#include <optional>
#include <string>

namespace helper {

// Started by the application before an install: waits until the new version is in place, asks the old application to
// quit, and starts the new one.
class PostUpdate {
public:
    enum class Outcome {
        Started,      // the new application
        NoNewVersion, // the application that asked for it went away first, or it took too long
        NotStarted,
    };

    // Known from the process's parent, when that is the application.
    PostUpdate();

    Outcome run();

private:
    using Clock = std::chrono::steady_clock;

    std::optional<VersionNumber> installedVersion() const;
    bool isReplaced() const;
    bool isOnTrial() const;
    bool waitForNewVersion();
    bool waitForHelper() const;
    void endOldApplication() const;
    // Waits until the installation changes, the old application ends or the time is over. False when it has ended.
    bool waitForChange(Clock::time_point end);

    const std::optional<VersionNumber> _oldVersion;
    platform::FileDescriptor _oldApplication; // none when somebody else started this program
    platform::FileDescriptor _changes;
};

} // namespace helper
