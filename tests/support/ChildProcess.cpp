#include "tests/support/ChildProcess.h"

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>

extern char** environ;

namespace {

std::vector<std::string> mergedEnvironment(const ChildProcess::Environment& additions)
{
    std::vector<std::string> merged;
    for (char** entry = environ; *entry; ++entry) {
        const std::string text = *entry;
        if (!additions.contains(text.substr(0, text.find('='))))
            merged.push_back(text);
    }
    for (const auto& [name, value] : additions)
        merged.push_back(name + "=" + value);
    return merged;
}

std::vector<char*> pointers(std::vector<std::string>& strings)
{
    std::vector<char*> result;
    for (std::string& string : strings)
        result.push_back(string.data());
    result.push_back(nullptr);
    return result;
}

void makePipe(int (&ends)[2])
{
    if (pipe2(ends, O_CLOEXEC) < 0)
        throw std::runtime_error(std::string("pipe: ") + strerror(errno));
}

} // namespace

ChildProcess::ChildProcess(const Arguments& arguments, const Environment& environment)
{
    // Everything that allocates comes before the fork: the test has threads.
    std::vector<std::string> ownedArguments = arguments;
    std::vector<std::string> ownedEnvironment = mergedEnvironment(environment);
    const std::vector<char*> argv = pointers(ownedArguments);
    const std::vector<char*> envp = pointers(ownedEnvironment);
    int input[2], output[2], failure[2];
    makePipe(input);
    makePipe(output);
    makePipe(failure);
    const pid_t parent = getpid();
    _pid = fork();
    if (_pid == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (getppid() != parent)
            _exit(127);
        sigset_t none;
        sigemptyset(&none);
        sigprocmask(SIG_SETMASK, &none, nullptr);
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        execvpe(argv[0], argv.data(), envp.data());
        const int error = errno;
        (void)!::write(failure[1], &error, sizeof error);
        _exit(127);
    }
    close(input[0]);
    close(output[1]);
    close(failure[1]);
    _input = input[1];
    _output = output[0];
    int error = _pid < 0 ? errno : 0;
    const bool failed = _pid < 0 || read(failure[0], &error, sizeof error) > 0;
    close(failure[0]);
    if (failed) {
        wait();
        close(_input);
        close(_output);
        throw std::runtime_error("cannot start " + arguments.front() + ": " + strerror(error));
    }
}

ChildProcess::~ChildProcess()
{
    kill();
    closeInput();
    close(_output);
}

bool ChildProcess::isRunning()
{
    if (_status)
        return false;
    siginfo_t information = {};
    return waitid(P_PID, static_cast<id_t>(_pid), &information, WEXITED | WNOHANG | WNOWAIT) == 0
        && information.si_pid == 0;
}

void ChildProcess::signal(int number) const
{
    if (!_status && _pid > 0)
        ::kill(_pid, number);
}

void ChildProcess::kill()
{
    signal(SIGKILL);
    wait();
}

int ChildProcess::wait()
{
    if (_status || _pid < 0)
        return _status.value_or(-1);
    int status = 0;
    while (waitpid(_pid, &status, 0) < 0 && errno == EINTR) { }
    _status = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    return *_status;
}

bool ChildProcess::fillBuffer(int milliseconds)
{
    pollfd descriptor = {_output, POLLIN, 0};
    if (poll(&descriptor, 1, milliseconds) <= 0)
        return false;
    char bytes[4096];
    const ssize_t count = read(_output, bytes, sizeof bytes);
    if (count <= 0)
        return false;
    _buffer.append(bytes, static_cast<std::size_t>(count));
    return true;
}

std::optional<std::string> ChildProcess::readLine(int milliseconds)
{
    using Clock = std::chrono::steady_clock;
    const auto end = Clock::now() + std::chrono::milliseconds(milliseconds);
    for (;;) {
        if (const std::size_t newline = _buffer.find('\n'); newline != std::string::npos) {
            std::string line = _buffer.substr(0, newline);
            _buffer.erase(0, newline + 1);
            return line;
        }
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
        if (left < 0 || !fillBuffer(static_cast<int>(left)))
            return std::nullopt;
    }
}

std::string ChildProcess::readAll()
{
    while (fillBuffer(-1)) { }
    return std::exchange(_buffer, {});
}

void ChildProcess::write(const std::string& text) const
{
    for (std::size_t done = 0; done < text.size();) {
        const ssize_t count = ::write(_input, text.data() + done, text.size() - done);
        if (count <= 0)
            throw std::runtime_error(std::string("cannot write to the child: ") + strerror(errno));
        done += static_cast<std::size_t>(count);
    }
}

void ChildProcess::closeInput()
{
    if (_input >= 0)
        close(std::exchange(_input, -1));
}
