#include "platform/linux/system/processes/ServiceUnit.h"

#include "platform/ProgramPath.h"

#include <cstdlib>
#include <systemd/sd-daemon.h>
#include <unistd.h>

namespace platform {

namespace {

constexpr const char* launcher = "/usr/bin/systemd-run";

} // namespace

// Whoever starts this program may be a unit's process too, and hands the variable on.
bool isServiceUnit()
{
    const char* const main = std::getenv("SYSTEMD_EXEC_PID");
    return main && std::to_string(::getpid()) == main && ::sd_booted() > 0;
}

std::expected<std::unique_ptr<Process>, int> startApart(const std::vector<std::string>& properties,
                                                        const std::vector<std::string>& arguments)
{
    std::vector<std::string> words{"--quiet", "--wait", "--collect", "--pipe"};
    for (const auto& property : properties)
        words.push_back("--property=" + property);
    words.insert(words.end(), {"--", programPath()});
    words.insert(words.end(), arguments.begin(), arguments.end());
    return Process::start(launcher, words);
}

} // namespace platform
