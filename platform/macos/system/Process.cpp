#include "platform/ChildProcess.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <mutex>
#include <optional>
#include <unistd.h>

// What this system lacks is a signal for a child whose parent has ended. A process beside the child, which is a child
// of that, stands in for it. Plain POSIX.
namespace platform {

namespace {

struct Pipe {
    FileDescriptor readEnd;
    FileDescriptor writeEnd;
};

std::optional<Pipe> newPipe()
{
    std::array<int, 2> ends{};
    if (::pipe(ends.data()) != 0)
        return std::nullopt;
    for (const int end : ends)
        ::fcntl(end, F_SETFD, FD_CLOEXEC);
    return Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

// Waits for the other end of the lifeline to be closed: the process that held it has ended, or has waited for the
// child. In the former case the child, which is this one's parent, may still be there. Nothing that takes a lock may be
// called.
[[noreturn]] void watch(pid_t child, int lifeline, int descriptors)
{
    for (int descriptor = 0; descriptor < descriptors; ++descriptor) {
        if (descriptor != lifeline)
            ::close(descriptor);
    }
    char byte = 0;
    while (::read(lifeline, &byte, 1) < 0 && errno == EINTR) { }
    if (::getppid() == child)
        ::kill(child, SIGKILL);
    ::_exit(0);
}

} // namespace

std::expected<std::unique_ptr<Process>, int> Process::start(const std::string& path,
                                                            const std::vector<std::string>& arguments)
{
    const auto pointers = ChildProcess::pointers(path, arguments);
    const int descriptors = ::getdtablesize();
    // Of two processes made at once neither may get an end of the other's pipes, which would keep them open.
    static std::mutex making;
    const std::lock_guard guard(making);
    auto output = newPipe();
    auto lifeline = output ? newPipe() : std::nullopt;
    if (!lifeline)
        return std::unexpected(errno);
    const auto child = ::fork();
    if (child < 0)
        return std::unexpected(errno);
    if (child == 0) {
        const auto self = ::getpid();
        const auto watcher = ::fork();
        if (watcher == 0)
            watch(self, lifeline->readEnd.get(), descriptors);
        if (watcher < 0)
            ::_exit(ChildProcess::cannotExecute);
        ChildProcess::execute(pointers.data(), output->writeEnd.get());
    }
    return std::make_unique<ChildProcess>(child, std::move(output->readEnd), std::move(lifeline->writeEnd));
}

} // namespace platform
