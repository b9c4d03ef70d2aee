// Tells the user of a session of trouble with backups. Started by the desktop.

#include "diagnostics/log/ZRKLog.h"
#include "platform/linux/agent/SessionAgent.h"

#include <cstdio>
#include <cstdlib>
#include <malloc.h>
#include <string_view>
#include <sysexits.h>
#include <unistd.h>

namespace {

constexpr const char* usage =
    "usage: com.zerkolin.brevane.agent\n"
    "Shows notifications on the desktop when backups fail, are missed, or are not made for a week.\n";

} // namespace

int main(int count, char** arguments)
{
    if (count > 1) {
        const bool isAsked = std::string_view(arguments[1]) == "--help";
        std::fputs(usage, isAsked ? stdout : stderr);
        return isAsked ? EXIT_SUCCESS : EX_USAGE;
    }
    ::mallopt(M_ARENA_MAX, 1);
    ::mallopt(M_TRIM_THRESHOLD, 64 * 1024);
    ZRKLogInit("com.zerkolin.brevane", "agent");
    auto agent = platform::SessionAgent::create();
    if (!agent)
        return EXIT_SUCCESS; // another one serves the session already
    const int status = agent->run();
    const auto next = agent->nextVersion();
    agent.reset(); // the name is free for it
    if (!next.empty())
        ::execv(next.c_str(), arguments);
    return status;
}
