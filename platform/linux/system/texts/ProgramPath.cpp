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

std::string programFolder()
{
    const auto path = programPath();
    const auto slash = path.rfind('/');
    return path.substr(0, slash == std::string::npos ? 0 : slash);
}

} // namespace platform
