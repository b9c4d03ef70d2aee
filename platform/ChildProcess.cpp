#include "platform/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace platform {

ChildProcess::~ChildProcess()
{
    if (_status)
        return;
    ChildProcess::kill();
    ChildProcess::waitUntilExit();
}

std::size_t ChildProcess::read(std::span<char> buffer)
{
    ssize_t count = -1;
    do
        count = ::read(_output.get(), buffer.data(), buffer.size());
    while (count < 0 && errno == EINTR);
    return count < 0 ? 0 : static_cast<std::size_t>(count);
}

void ChildProcess::kill()
{
    const std::lock_guard lock(_mutex);
    if (!_status)
        ::kill(_child, SIGKILL);
}

int ChildProcess::waitUntilExit()
{
    // It keeps its number until it is waited for once more, which takes no time then.
    siginfo_t end{};
    while (!_status && ::waitid(P_PID, static_cast<id_t>(_child), &end, WEXITED | WNOWAIT) < 0 && errno == EINTR) { }
    const std::lock_guard lock(_mutex);
    int status = 0;
    while (!_status) {
        if (::waitpid(_child, &status, 0) == _child)
            _status = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
        else if (errno != EINTR)
            _status = -1; // somebody else has waited for it
    }
    _lifeline.reset();
    return *_status;
}

void ChildProcess::execute(char* const* arguments, int output)
{
    // Queues block the signals of their threads; the program is to have those of a fresh process.
    sigset_t none;
    sigemptyset(&none); // a macro on some systems
    ::sigprocmask(SIG_SETMASK, &none, nullptr);
    ::signal(SIGPIPE, SIG_DFL);
    if (::dup2(output, STDOUT_FILENO) >= 0)
        ::execv(arguments[0], arguments);
    ::_exit(cannotExecute);
}

std::vector<char*> ChildProcess::pointers(const std::string& path, const std::vector<std::string>& arguments)
{
    std::vector<char*> pointers{const_cast<char*>(path.c_str())};
    for (const auto& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace platform
