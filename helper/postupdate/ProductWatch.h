#pragma once

#include "helper/update/VersionNumber.h"

#include <chrono>
#include <memory>
#include <optional>

namespace helper {

// What the program that waits for a new version sees of the installation, and of the application that has started it.
class ProductWatch {
public:
    using Clock = std::chrono::steady_clock;

    // The application is this process's parent, when that is the application.
    static std::unique_ptr<ProductWatch> create();
    virtual ~ProductWatch() = default;

    virtual std::optional<VersionNumber> installedVersion() const = 0;
    // While the old version is kept, it may come back.
    virtual bool isOnTrial() const = 0;

    // Waits until the installation changes, the old application ends or the time is over. False when it has ended.
    virtual bool waitForChange(Clock::time_point end) = 0;

    // Asks the old application to end, if there is one, and waits until it has: it may ask a person something first,
    // who may take any time.
    virtual void endApplication() = 0;
    // False when it cannot be started.
    virtual bool startApplication() = 0;
};

} // namespace helper
