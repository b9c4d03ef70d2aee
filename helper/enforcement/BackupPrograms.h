#pragma once

#include "platform/BackupRunner.h"
#include "platform/Error.h"

#include <expected>
#include <optional>
#include <string>
#include <vector>

namespace helper {

// What can make a backup here, and which of it is chosen. Any thread, but one change at a time.
class BackupPrograms {
public:
    virtual ~BackupPrograms() = default;

    // The messages that ask for it and that change it. Both look anew what can be chosen.
    virtual platform::Dictionary reply() = 0;
    virtual platform::Result<void> choose(const platform::Dictionary& choice, bool isWithoutPassword) = 0;

    // Whether one is chosen and is there.
    virtual bool isReady() const = 0;
    virtual std::string identifier() const = 0;
    virtual std::string name() const = 0; // as a person reads it; empty when none is chosen
    virtual bool preventsSleep() const = 0;
    virtual std::vector<std::string> folders() const = 0; // that are backed up, as far as it has to be told

    // What a person has to know about it here: sentences, as they were at the start. None, usually.
    virtual std::vector<std::string> notes() const { return {}; }

    // Otherwise a sentence that says what is missing.
    virtual std::expected<platform::BackupJob, std::string> job(const std::string& identifier) const = 0;
    // Whether a status is a success of the program of that identifier.
    virtual bool isSuccess(const std::string& program, std::optional<int> status) const = 0;
};

} // namespace helper
