#include "platform/ProgramPath.h"

#include <array>
#include <climits>
#include <libproc.h>
#include <unistd.h>

namespace platform {

std::string programPath()
{
    std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
    const int length = ::proc_pidpath(::getpid(), path.data(), path.size());
    return {path.data(), static_cast<std::size_t>(length > 0 ? length : 0)};
}

} // namespace platform
