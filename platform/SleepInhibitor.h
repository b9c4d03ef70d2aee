#pragma once

#include "platform/Error.h"

#include <memory>
#include <string>

namespace platform {

// Keeps the computer from falling asleep by itself while it lives; a person can still send it to sleep.
class SleepInhibitor {
public:
    // The reason is for the person who asks what keeps the computer awake. Fails when the system cannot or will not;
    // waits for its answer, five seconds at most.
    static Result<std::unique_ptr<SleepInhibitor>> create(const std::string& reason);
    virtual ~SleepInhibitor() = default;
};

} // namespace platform
