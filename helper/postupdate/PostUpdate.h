#pragma once

#include "helper/postupdate/ProductWatch.h"

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

    // The limit is for the new helper's first answer.
    explicit PostUpdate(std::unique_ptr<ProductWatch> watch,
                        std::chrono::milliseconds helperLimit = std::chrono::seconds(20));

    Outcome run();

private:
    using Clock = ProductWatch::Clock;

    bool isReplaced() const;
    bool waitForNewVersion();
    bool waitForHelper() const;

    const std::unique_ptr<ProductWatch> _watch;
    const std::chrono::milliseconds _helperLimit;
    const std::optional<VersionNumber> _oldVersion;
};

} // namespace helper
