#include "platform/RunningProgram.h"

#include <array>
#include <climits>
#include <cstdlib>
#include <unistd.h>

namespace platform {

std::string executablePath()
{
    std::array<char, PATH_MAX> path{};
    const auto length = ::readlink("/proc/self/exe", path.data(), path.size());
    return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
}

void useLanguage(const std::string& language)
{
    ::unsetenv("LC_ALL");
    ::setenv("LC_MESSAGES", (language + ".UTF-8").c_str(), 1); // or the list would not count
    ::setenv("LANGUAGE", language.c_str(), 1);
}

} // namespace platform
