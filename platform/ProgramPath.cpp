#include "platform/ProgramPath.h"

namespace platform {

std::string programFolder()
{
    const auto path = programPath();
    const auto slash = path.rfind('/');
    return path.substr(0, slash == std::string::npos ? 0 : slash);
}

} // namespace platform
