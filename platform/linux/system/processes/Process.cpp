#include "platform/Process.h"

#include "platform/FileDescriptor.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <optional>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr int cannotExecute = 1;

class ChildProcess final : public Process {
public:
    ChildProcess(pid_t child, FileDescriptor output) : _child(child), _output(std::move(output)) { }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;
    ~ChildProcess() override
    {
        if (_status)
            return;
        ::kill(_child, SIGKILL);
        waitUntilExit();
    }

    std::size_t read(std::span<char> buffer) override
    {
        ssize_t count = -1;
        do
            count = ::read(_output.get(), buffer.data(), buffer.size());
        while (count < 0 && errno == EINTR);
        return count < 0 ? 0 : static_cast<std::size_t>(count);
    }

    void closeOutput() override { _output.reset(); }

    int waitUntilExit() override
    {
        int status = 0;
        while (!_status) {
            if (::waitpid(_child, &status, 0) == _child)
                _status = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
            else if (errno != EINTR)
                _status = -1; // somebody else has waited for it
        }
        return *_status;
    }

private:
    pid_t _child;
    FileDescriptor _output;
    std::optional<int> _status;
};

// In the new process, which has one thread and may call nothing that takes a lock.
[[noreturn]] void execute(char* const* arguments, pid_t parent, FileDescriptor& readEnd, FileDescriptor& writeEnd)
{
    // Queues block the signals of their threads; the program is to have those of a fresh process.
    sigset_t none;
    ::sigemptyset(&none);
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    const bool prepared = ::getppid() == parent && ::dup2(writeEnd.get(), STDOUT_FILENO) >= 0;
    readEnd.reset();
    writeEnd.reset();
    if (prepared)
        ::execv(arguments[0], arguments);
    ::_exit(cannotExecute);
}

} // namespace

std::expected<std::unique_ptr<Process>, int> Process::start(const std::string& path,
                                                            const std::vector<std::string>& arguments)
{
    std::vector<char*> argv{const_cast<char*>(path.c_str())};
    for (const auto& argument : arguments)
        argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);

    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return std::unexpected(errno);
    FileDescriptor readEnd(ends[0]);
    FileDescriptor writeEnd(ends[1]);
    const auto parent = ::getpid();
    const auto child = ::fork();
    if (child < 0)
        return std::unexpected(errno);
    if (child == 0)
        execute(argv.data(), parent, readEnd, writeEnd);
    return std::make_unique<ChildProcess>(child, std::move(readEnd));
}

} // namespace platform
