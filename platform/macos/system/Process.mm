#include "platform/ChildProcess.h"

#include <cerrno>
#include <fcntl.h>
#include <mutex>
#include <unistd.h>

namespace platform {

std::expected<std::unique_ptr<Process>, int> Process::start(const std::string& path,
                                                            const std::vector<std::string>& arguments)
{
    const auto pointers = ChildProcess::pointers(path, arguments);
    // Of two processes made at once neither may get an end of the other's pipe, which would keep it open.
    static std::mutex making;
    const std::lock_guard guard(making);
    int ends[2];
    if (::pipe(ends) != 0)
        return std::unexpected(errno);
    FileDescriptor readEnd(ends[0]);
    const FileDescriptor writeEnd(ends[1]);
    ::fcntl(readEnd.get(), F_SETFD, FD_CLOEXEC);
    ::fcntl(writeEnd.get(), F_SETFD, FD_CLOEXEC);
    const auto child = ::fork();
    if (child < 0)
        return std::unexpected(errno);
    if (child == 0)
        ChildProcess::execute(pointers.data(), writeEnd.get());
    return std::make_unique<ChildProcess>(child, std::move(readEnd));
}

} // namespace platform
