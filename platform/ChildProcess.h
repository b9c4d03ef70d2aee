#pragma once

#include "platform/FileDescriptor.h"
#include "platform/Process.h"

#include <mutex>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace platform {

// A child process of this one, as Process::start() of a port makes it.
class ChildProcess final : public Process {
public:
    // The output is the reading end of the pipe. The lifeline is held open until the child has ended, or this process
    // has, for whoever watches the other end of it.
    ChildProcess(pid_t child, FileDescriptor output, FileDescriptor lifeline = {})
        : _child(child),
          _output(std::move(output)),
          _lifeline(std::move(lifeline))
    {
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() override;

    std::size_t read(std::span<char> buffer) override;
    void closeOutput() override { _output.reset(); }
    void kill() override;
    int waitUntilExit() override;

    // In the new process, which has one thread and may call nothing that takes a lock: becomes the program, with the
    // descriptor as its standard output and the signals of a fresh process. Ends with cannotExecute otherwise.
    [[noreturn]] static void execute(char* const* arguments, int output);
    // What execute() takes; valid as long as the texts are.
    static std::vector<char*> pointers(const std::string& path, const std::vector<std::string>& arguments);

    static constexpr int cannotExecute = 1;

private:
    pid_t _child;
    FileDescriptor _output;
    FileDescriptor _lifeline;
    std::mutex _mutex; // guards the child's number from being killed once it may be another's
    std::optional<int> _status;
};

} // namespace platform
