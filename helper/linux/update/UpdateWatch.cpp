#include "helper/linux/update/UpdateWatch.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/HelperOptions.h"
#include "helper/linux/installation/Installation.h"
#include "helper/SystemError.h"
#include "messaging/ZRKError.h"
#include "platform/ChildProcess.h"
#include "platform/linux/system/bus/ServiceProbe.h"
#include "platform/Root.h"
#include "platform/SignalMask.h"
#include "protocol/Messages.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <memory>
#include <poll.h>
#include <spawn.h>
#include <string_view>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sysexits.h>
#include <thread>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h> // does not say so itself in glibc 2.36
}

namespace helper {

using platform::FileDescriptor;
using platform::Result;

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* watchArgument = "--watch-update";
constexpr const char* takeBackArgument = "--take-back";
constexpr std::chrono::milliseconds askWhetherTold{20};
constexpr std::chrono::milliseconds answerLimit{1000};
constexpr std::chrono::seconds endLimit{5};

FileDescriptor terminationSignals()
{
    const sigset_t signals = platform::blockSignals({SIGTERM, SIGINT});
    return FileDescriptor(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
}

class Watcher {
public:
    Watcher(HelperOptions options, pid_t process, FileDescriptor ended)
        : _options(std::move(options)),
          _process(process),
          _ended(std::move(ended)),
          _signals(terminationSignals())
    {
    }

    int run();

private:
    void waitForOldVersion();
    void wait(int work, std::chrono::milliseconds limit);
    bool serves();
    void endProcess();
    int takeBack();
    int startAgain();
    bool isUnit() const;

    const HelperOptions _options;
    const Installation _installation;
    const pid_t _process;
    const FileDescriptor _ended; // readable when the process has
    const FileDescriptor _signals;
    std::unique_ptr<platform::ServiceProbe> _probe;
    bool _hasEnded = false;
    bool _isTold = false; // to stop
    bool _isAtWork = true;
};

// A descriptor of -1 is waited for in vain.
void Watcher::wait(int work, std::chrono::milliseconds limit)
{
    std::array<pollfd, 3> waiting{{{_ended.get(), POLLIN, 0}, {_signals.get(), POLLIN, 0}, {work, POLLIN, 0}}};
    if (::poll(waiting.data(), waiting.size(), static_cast<int>(limit.count())) <= 0)
        return;
    _hasEnded = _hasEnded || waiting[0].revents != 0;
    _isTold = _isTold || waiting[1].revents != 0;
    _isAtWork = _isAtWork && waiting[2].revents == 0;
}

void Watcher::waitForOldVersion()
{
    while (_isAtWork && !_hasEnded)
        wait(STDIN_FILENO, _isTold ? askWhetherTold : std::chrono::milliseconds(-1));
}

bool Watcher::serves()
{
    if (!_probe)
        _probe = platform::ServiceProbe::open(answerLimit).value_or(nullptr);
    const bool isAnswered = _probe && _probe->owner(BRVSchedulerServiceName) == _process
        && _probe->answers(BRVSchedulerServiceName, {{"message", BRVMessageGetAutoUpdates}});
    if (!isAnswered)
        _probe.reset();
    return isAnswered;
}

int Watcher::run()
{
    waitForOldVersion();
    if (_installation.state() != Installation::State::OnTrial)
        return EXIT_SUCCESS;
    for (const auto end = Clock::now() + _options.updates.trial; !_hasEnded && !_isTold; wait(-1, askWhetherTold)) {
        if (serves()) {
            _probe.reset(); // an open connection counts as a program that uses the helper
            _installation.settle();
            return EXIT_SUCCESS;
        }
        if (Clock::now() >= end) {
            endProcess();
            break;
        }
    }
    return takeBack();
}

void Watcher::endProcess()
{
    ::pidfd_send_signal(_ended.get(), SIGKILL, nullptr, 0);
    for (const auto end = Clock::now() + endLimit; !_hasEnded && Clock::now() < end;)
        wait(-1, askWhetherTold);
}

int Watcher::takeBack()
{
    const auto failed = _installation.manifest();
    if (auto back = _installation.takeBack(); !back) {
        ZRKError::log(back.error());
        return EX_OSERR;
    }
    const auto current = _installation.manifest();
    ZRKLogMessage(LogLevelError, "Version %@ has not served a request. Version %@ is back.",
                  {failed ? failed->version : "", current ? current->version : ""});
    return _isTold || isUnit() ? EXIT_SUCCESS : startAgain();
}

// Whether the process is what a service manager calls the service: then it starts the old version anew.
bool Watcher::isUnit() const
{
    const char* main = std::getenv("SYSTEMD_EXEC_PID");
    return main && std::to_string(_process) == main;
}

int Watcher::startAgain()
{
    for (const auto end = Clock::now() + endLimit; Clock::now() < end; std::this_thread::sleep_for(askWhetherTold)) {
        const auto probe = platform::ServiceProbe::open(answerLimit);
        if (!probe)
            return EX_UNAVAILABLE; // there is nobody to serve
        if ((*probe)->owner(BRVSchedulerServiceName) == 0)
            break;
    }
    const FileDescriptor nothing(::open("/dev/null", O_RDWR | O_CLOEXEC));
    ::dup2(nothing.get(), STDIN_FILENO);
    const auto program = _installation.program();
    ::execv(program.c_str(), platform::ChildProcess::pointers(program, _options.arguments).data());
    ZRKLogMessage(LogLevelError, "The old version cannot be started.");
    return EX_OSERR;
}

// Whoever started this waits for its end, by which the watch is ready; a child of its goes on, and is nobody's child
// whom the new version would have to wait for.
int beginWatch(HelperOptions options)
{
    const auto process = ::getppid();
    FileDescriptor ended(::pidfd_open(process, 0));
    if (!ended || ::getppid() != process)
        return EX_OSERR;
    platform::setSystemRoot(options.root);
    const auto lock = Installation().lock();
    if (!lock)
        return EX_TEMPFAIL;
    const auto child = ::fork();
    if (child != 0)
        return child < 0 ? EX_OSERR : EXIT_SUCCESS;
    ZRKLogInit("com.zerkolin.brevane", "scheduler");
    return Watcher(std::move(options), process, std::move(ended)).run();
}

int takeBackUnwatched(const HelperOptions& options)
{
    platform::setSystemRoot(options.root);
    ZRKLogInit("com.zerkolin.brevane", "scheduler");
    const Installation installation;
    const auto lock = installation.lock();
    if (!lock || installation.state() != Installation::State::OnTrial)
        return EXIT_SUCCESS;
    if (auto back = installation.takeBack(); !back) {
        ZRKError::log(back.error());
        return EX_OSERR;
    }
    ZRKLogMessage(LogLevelError, "The new version was not seen to serve a request. The old one is back.");
    return EXIT_SUCCESS;
}

std::unexpected<platform::Error> notStarted(int code)
{
    return std::unexpected(systemError(code, "The watch over the new version could not be started."));
}

} // namespace

Result<UpdateWatch> UpdateWatch::start(const std::string& program, const std::vector<std::string>& arguments)
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        return notStarted(errno);
    const FileDescriptor watched(ends[0]);
    FileDescriptor work(ends[1]);
    std::vector<std::string> watching{watchArgument};
    watching.insert(watching.end(), arguments.begin(), arguments.end());
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, watched.get(), STDIN_FILENO);
    pid_t child = -1;
    // With the signals of this process, so that none ends it before it waits for them.
    const int failure = ::posix_spawn(&child, program.c_str(), &actions, nullptr,
                                      platform::ChildProcess::pointers(program, watching).data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    if (failure != 0)
        return notStarted(failure);
    int status = 0;
    while (::waitpid(child, &status, 0) < 0) {
        if (errno != EINTR)
            return notStarted(errno);
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != EXIT_SUCCESS)
        return notStarted(ECHILD);
    return UpdateWatch(std::move(work));
}

std::optional<int> runUpdateWatchCommand(int count, char** arguments)
{
    const std::string_view command = count > 1 ? arguments[1] : "";
    if (command != watchArgument && command != takeBackArgument)
        return std::nullopt;
    ::umask(022);
    (void)platform::blockSignals({SIGTERM, SIGINT}); // they are for the watch's own waiting
    auto options = HelperOptions::inArguments(count - 1, arguments + 1);
    if (!options)
        return EX_USAGE;
    return command == watchArgument ? beginWatch(std::move(*options)) : takeBackUnwatched(*options);
}

} // namespace helper
