#include "platform/ChildProcess.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace platform {

std::expected<std::unique_ptr<Process>, int> Process::start(const std::string& path,
                                                            const std::vector<std::string>& arguments)
{
    const auto pointers = ChildProcess::pointers(path, arguments);
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0)
        return std::unexpected(errno);
    FileDescriptor readEnd(ends[0]);
    const FileDescriptor writeEnd(ends[1]);
    const auto parent = ::getpid();
    const auto child = ::fork();
    if (child < 0)
        return std::unexpected(errno);
    if (child == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (::getppid() != parent) // it ended before
            ::_exit(ChildProcess::cannotExecute);
        ChildProcess::execute(pointers.data(), writeEnd.get());
    }
    return std::make_unique<ChildProcess>(child, std::move(readEnd));
}

} // namespace platform
