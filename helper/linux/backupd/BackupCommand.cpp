#include "helper/linux/backupd/BackupCommand.h"

#include "platform/FileDescriptor.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>

extern "C" { // which this header forgets in older versions of the C library
#include <sys/pidfd.h>
}

namespace helper {

using platform::FileDescriptor;

namespace {

std::vector<char*> pointersTo(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    for (const auto& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

// Why a program was not run, as the new process writes it to a pipe.
struct Failure {
    int code = 0;
    bool isOfConfinement = false;
};

// In the new process. Writes why to the pipe when the program cannot be run.
[[noreturn]] void execute(char* const* arguments, char* const* environment, const BackupConfinement& confinement,
                          int output, int failure, pid_t parent)
{
    ::signal(SIGPIPE, SIG_DFL);
    ::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) // it has ended already, and nothing would end this process
        ::_exit(ExitCannotRun);
    const int none = ::open("/dev/null", O_RDONLY);
    const int refusal = confinement.apply();
    if (refusal == 0 && none >= 0 && ::dup2(none, STDIN_FILENO) >= 0 && ::dup2(output, STDOUT_FILENO) >= 0
        && ::dup2(output, STDERR_FILENO) >= 0)
        ::execve(arguments[0], arguments, environment);
    const Failure why{refusal != 0 ? refusal : errno, refusal != 0};
    [[maybe_unused]] const auto written = ::write(failure, &why, sizeof why);
    ::_exit(ExitCannotRun);
}

struct Pipe {
    Pipe()
    {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0)
            return;
        readEnd.reset(ends[0]);
        writeEnd.reset(ends[1]);
    }
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

// What is there now. False at the end.
bool readOutput(int output, OutputLines& lines)
{
    std::array<char, 65536> bytes;
    const auto count = ::read(output, bytes.data(), bytes.size());
    if (count > 0)
        lines.add({bytes.data(), static_cast<std::size_t>(count)});
    return count > 0 || (count < 0 && (errno == EINTR || errno == EAGAIN));
}

// Until the program ends, or closes its output and ends.
void followOutput(int output, int process, OutputLines& lines)
{
    std::array<pollfd, 2> sources = {{{output, POLLIN, 0}, {process, POLLIN, 0}}};
    while (sources[1].revents == 0) {
        if (::poll(sources.data(), sources.size(), -1) < 0)
            continue;
        if (sources[0].revents != 0 && !readOutput(output, lines))
            sources[0].fd = -1;
    }
    // Others may still hold the pipe: what is in it is read, no more.
    ::fcntl(output, F_SETFL, O_NONBLOCK);
    std::array<char, 65536> bytes;
    for (int turn = 0; turn < 16; ++turn) {
        const auto count = ::read(output, bytes.data(), bytes.size());
        if (count <= 0)
            break;
        lines.add({bytes.data(), static_cast<std::size_t>(count)});
    }
    lines.finish();
}

int waitForEnd(pid_t child)
{
    int status = 0;
    while (::waitpid(child, &status, 0) < 0 && errno == EINTR) { }
    return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

int reportFailure(const std::string& program, const Failure& why, BackupLog& log)
{
    log.message(
        BackupLog::Error,
        "'" + program
            + (why.isOfConfinement ? "' was not run: it could not be kept to the disk. " : "' could not be run. ")
            + std::generic_category().message(why.code) + ".");
    return why.code == ENOENT && !why.isOfConfinement ? ExitNotFound : ExitCannotRun;
}

} // namespace

int runBackupCommand(const std::vector<std::string>& command, const std::vector<std::string>& environment,
                     const BackupConfinement& confinement, BackupLog& log)
{
    const auto arguments = pointersTo(command);
    const auto variables = pointersTo(environment);
    Pipe output;
    Pipe failure;
    const auto parent = ::getpid();
    const auto child = output.readEnd && failure.readEnd ? ::fork() : -1;
    if (child < 0)
        return reportFailure(command.front(), {errno, false}, log);
    if (child == 0)
        execute(arguments.data(), variables.data(), confinement, output.writeEnd.get(), failure.writeEnd.get(), parent);
    output.writeEnd.reset();
    failure.writeEnd.reset();
    const FileDescriptor process(::pidfd_open(child, 0));
    Failure why;
    if (::read(failure.readEnd.get(), &why, sizeof why) == sizeof why) {
        waitForEnd(child);
        return reportFailure(command.front(), why, log);
    }
    OutputLines lines(log);
    followOutput(output.readEnd.get(), process.get(), lines);
    return waitForEnd(child);
}

} // namespace helper
