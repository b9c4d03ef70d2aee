#pragma once

#include <cstddef>
#include <expected>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace platform {

// A child process whose standard output is read through a pipe; it inherits everything else. It never outlives this
// object, nor this process: it is killed and waited for.
class Process {
public:
    // The program's first argument is its path, and then those given. The failure is an errno value of making the pipe
    // or the process. A program that cannot be executed ends at once, without output, with status 1.
    static std::expected<std::unique_ptr<Process>, int> start(const std::string& path,
                                                              const std::vector<std::string>& arguments);
    virtual ~Process() = default;

    // Waits for output. 0 at its end and on an error.
    virtual std::size_t read(std::span<char> buffer) = 0;
    virtual void closeOutput() = 0;
    // Ends it. Any thread, also while another reads or waits.
    virtual void kill() = 0;
    // The exit status, or the negative number of the signal that ended it.
    virtual int waitUntilExit() = 0;
};

} // namespace platform
