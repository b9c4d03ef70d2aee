#include "platform/Process.h"

#include <array>
#include <cstdio>
#include <string>

// "output": what the tool printed, and its exit status. "silent": starts a tool that prints its number and then nothing
// for a long time, prints that number and waits for it. "killed": likewise, kills it and tells its status. "missing": a
// tool that is not there.
int main(int argc, char** argv)
{
    const std::string what = argc > 1 ? argv[1] : "";
    std::string script = "echo line; exit 7";
    if (what == "silent" || what == "killed")
        script = "echo $$; exec sleep 600";
    const auto started = platform::Process::start(what == "missing" ? "/no/such/tool" : "/bin/sh", {"-c", script});
    if (!started)
        return 2;
    platform::Process& tool = **started;
    std::array<char, 64> buffer{};
    const auto count = tool.read(buffer);
    std::fwrite(buffer.data(), 1, count, stdout);
    std::fflush(stdout);
    if (what == "silent")
        return tool.waitUntilExit();
    if (what == "killed")
        tool.kill();
    std::printf("%d\n", tool.waitUntilExit());
    return 0;
}
