#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <string>
#include <vector>

namespace helper {

// How a program of the system ended, and what it wrote, its errors included.
struct CommandEnd {
    // The exit status, or the negative number of the signal that ended it. 126 and 127: it cannot be run, or is not
    // there.
    int status = 0;
    bool wasInTime = true; // otherwise it was ended
    std::string output;    // of which no more than the first megabyte is kept

    bool isSuccess() const { return status == 0 && wasInTime; }

    static constexpr int cannotRun = 126;
    static constexpr int notThere = 127;
};

// Runs an absolute path and its arguments to the end, or until the limit is over.
CommandEnd runCommand(const std::vector<std::string>& command, std::chrono::milliseconds limit);

// What is left of a command's outcome where only its success counts.
std::expected<void, std::string> successOf(std::expected<std::string, std::string> output);

// Why a command came to nothing, without a full stop at the end: in its own last words, if it had any.
std::string failureOfCommand(const std::vector<std::string>& command, const CommandEnd& end);

} // namespace helper
