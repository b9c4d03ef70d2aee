#include "helper/linux/update/SelfCheck.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/HelperOptions.h"
#include "helper/linux/installation/InstallationManifest.h"
#include "helper/SystemError.h"
#include "platform/FileDescriptor.h"
#include "platform/linux/system/bus/ServiceProbe.h"
#include "platform/linux/system/processes/Launch.h"
#include "platform/ProgramPath.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <string_view>
#include <sys/wait.h>
#include <sysexits.h>
#include <thread>
#include <unistd.h>

namespace helper {

using platform::FileDescriptor;
using platform::Result;

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* checkArgument = "--self-check";
constexpr std::chrono::seconds busLimit{5};
constexpr std::chrono::milliseconds askWhetherEnded{2};
constexpr std::size_t maximumOutput = 4096; // bytes that are logged

std::unexpected<platform::Error> notUsable(const std::string& reason)
{
    return std::unexpected(systemError(EBADMSG, "The new version cannot work here: " + reason + "."));
}

// What is written until the end, as far as it is kept; nullopt when the end does not come in time.
std::optional<std::string> readOutput(int output, Clock::time_point end)
{
    std::string text;
    std::array<char, 4096> buffer{};
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
        pollfd waiting{output, POLLIN, 0};
        const int ready = ::poll(&waiting, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
        if (ready < 0 && errno == EINTR)
            continue;
        const auto count = ready > 0 ? ::read(output, buffer.data(), buffer.size()) : -1;
        if (count < 0)
            return std::nullopt;
        if (count == 0)
            return text;
        text.append(buffer.data(), std::min(static_cast<std::size_t>(count), maximumOutput - text.size()));
    }
}

// The end of the process, which stays to be waited for, and of whatever it started in its session. False when it does
// not come in time.
bool waitForEnd(pid_t child, Clock::time_point end)
{
    bool hasEnded = false;
    for (;; std::this_thread::sleep_for(askWhetherEnded)) {
        siginfo_t found{};
        hasEnded = ::waitid(P_PID, static_cast<id_t>(child), &found, WEXITED | WNOWAIT | WNOHANG) == 0
            && found.si_pid == child;
        if (hasEnded || Clock::now() >= end)
            break;
    }
    ::kill(-child, SIGKILL);
    return hasEnded;
}

std::string reasonOf(int status)
{
    if (WIFSIGNALED(status))
        return "its helper ends with signal " + std::to_string(WTERMSIG(status));
    return "its helper ends with status " + std::to_string(WEXITSTATUS(status));
}

} // namespace

Result<void> checkProgram(const std::string& program, const std::vector<std::string>& arguments,
                          std::chrono::milliseconds limit)
{
    std::vector<std::string> command{program, checkArgument};
    command.insert(command.end(), arguments.begin(), arguments.end());
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return std::unexpected(systemError(errno, "The new version could not be tried."));
    const FileDescriptor read(ends[0]);
    FileDescriptor written(ends[1]);
    const FileDescriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    const auto child = platform::spawn(command, {nothing.get(), written.get(), written.get()});
    written.reset();
    if (!child)
        return notUsable("its helper cannot be started");
    const auto end = Clock::now() + limit;
    const auto output = readOutput(read.get(), end);
    const bool hasEnded = waitForEnd(*child, end);
    int status = 0;
    while (::waitpid(*child, &status, 0) < 0 && errno == EINTR) { }
    if (hasEnded && WIFEXITED(status) && WEXITSTATUS(status) == EXIT_SUCCESS)
        return {};
    if (output && !output->empty())
        ZRKLogMessage(LogLevelError, "The new version says: %@", {*output});
    return notUsable(hasEnded ? reasonOf(status) : "its helper does not answer in time");
}

std::optional<int> runSelfCheckCommand(int count, const char* const* arguments)
{
    if (count < 2 || std::string_view(arguments[1]) != checkArgument)
        return std::nullopt;
    const auto options = HelperOptions::inArguments(count - 1, arguments + 1);
    if (!options) {
        std::fputs("The arguments are not understood.\n", stderr);
        return EX_USAGE;
    }
    if (!InstallationManifest::inFolder(platform::programFolder())) {
        std::fprintf(stderr, "There is no list of this version in '%s'.\n", platform::programFolder().c_str());
        return EX_CONFIG;
    }
    if (const auto probe = platform::ServiceProbe::open(busLimit); !probe) {
        std::fprintf(stderr, "%s\n", probe.error().c_str());
        return EX_UNAVAILABLE;
    }
    return EXIT_SUCCESS;
}

} // namespace helper
