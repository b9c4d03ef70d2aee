#pragma once

#include "helper/linux/programs/ProgramDescription.h"
#include "platform/BackupRunner.h"

#include <expected>
#include <optional>
#include <string>

namespace helper {

// How a chosen program is run.
class BackupPlan {
public:
    // The program's file: the first of its executables that is there and the administrator's alone.
    static std::optional<std::string> executable(const ProgramDescription& program);

    // A file that the program needs and that is not there; nullopt when all is there.
    static std::optional<std::string> missingFile(const ProgramDescription& program);

    // What is to be run now: the preparation, unless it was done, and the backup. Everything is looked at once more,
    // since it may have changed from when it was chosen. Otherwise a sentence that says what is missing.
    static std::expected<platform::BackupJob, std::string>
    job(const ProgramDescription& program, const platform::Dictionary& fields, const std::string& identifier);

    // The arguments with the fields put in.
    static std::vector<std::string> filledIn(const std::vector<std::string>& arguments,
                                             const platform::Dictionary& fields, const std::string& identifier);
};

} // namespace helper
