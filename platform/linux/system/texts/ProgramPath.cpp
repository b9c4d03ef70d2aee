#include "platform/ProgramPath.h"

#include <array>
#include <limits.h>
#include <unistd.h>

namespace platform {

std::string programPath()
{
    std::array<char, PATH_MAX> path{};
    const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
    return {path.data(), length < 0 ? 0 : static_cast<std::size_t>(length)};
}

} // namespace platform
