#pragma once

#include "platform/Error.h"
#include "platform/PropertyList.h"

#include <chrono>
#include <functional>

namespace helper {

class PasswordRule;

// The product as it is installed here: looking for a newer version, putting it in place, and removal. All but check()
// one call at a time.
class ProductInstallation {
public:
    // Whether the caller waits no more. Asked from time to time.
    using GivenUp = std::function<bool()>;

    virtual ~ProductInstallation() = default;

    // Finishes what was interrupted; before anything else.
    virtual void recover() = 0;

    // The reply to BRVMessageCheckForUpdates. Errors of the updater's domain; 0 when there is nothing newer, 9 when it
    // is not this machine's turn.
    virtual platform::Result<platform::PropertyList> check(const GivenUp& isGivenUp) const = 0;

    // Success when the newer version is in place; this process still runs the old one. Giving up the wait is a success
    // where another program finishes the work.
    virtual platform::Result<void> install(const GivenUp& isGivenUp) = 0;

    // Whether another program of the system removes the product, and takes its time. Then remove() needs no end of a
    // trial.
    virtual bool isManagedElsewhere() const = 0;
    // Waits until the version in place has proved itself or was given up. False when that takes longer than the limit.
    virtual bool waitForTrial(std::chrono::milliseconds limit) const = 0;
    // Removes what was installed and what this program has written since, and nothing else. Nothing is removed when
    // something is known to stay; that is the error.
    virtual platform::Result<void> remove(const PasswordRule& rule, const GivenUp& isGivenUp) = 0;
};

} // namespace helper
