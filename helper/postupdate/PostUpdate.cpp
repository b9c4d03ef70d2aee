#include "helper/postupdate/PostUpdate.h"

#include "diagnostics/log/ZRKLog.h"
#include "helper/linux/installation/InstallationManifest.h"
#include "messaging/BRVHelperMessager.h"
#include "platform/linux/system/processes/Launch.h"
#include "platform/Root.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <poll.h>
#include <string_view>
#include <sys/inotify.h>
#include <thread>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h> // does not say so itself in glibc 2.36
}

namespace helper {

namespace {

constexpr std::chrono::minutes installLimit{70}; // more than a download may take
constexpr std::chrono::seconds helperLimit{20};
constexpr std::chrono::minutes trialLimit{2}; // more than a new version has until it must serve
constexpr std::chrono::milliseconds askAgain{50};
constexpr std::chrono::seconds lookAgain{1};
constexpr std::string_view applicationName = "brevane";

// The name of the program that a process runs, also when its file has been removed since.
std::string programOf(pid_t process)
{
    std::array<char, PATH_MAX> path{};
    auto link = "/proc/" + std::to_string(process) + "/exe";
    auto length = ::readlink(link.c_str(), path.data(), path.size());
    std::string name(path.data(), length > 0 ? static_cast<std::size_t>(length) : 0);
    name.erase(0, name.rfind('/') + 1);
    constexpr std::string_view removed = " (deleted)";
    if (name.ends_with(removed))
        name.resize(name.size() - removed.size());
    return name;
}

platform::FileDescriptor parentApplication()
{
    auto parent = ::getppid();
    platform::FileDescriptor process(::pidfd_open(parent, 0));
    // Asked after it is held: a parent that ended before would have been replaced by then.
    if (!process || programOf(parent) != applicationName || ::getppid() != parent)
        return {};
    return process;
}

platform::FileDescriptor watchedInstallation()
{
    platform::FileDescriptor changes(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
    auto folder = platform::systemPath("/Library");
    if (::inotify_add_watch(changes.get(), folder.c_str(),
                            IN_MOVED_TO | IN_CREATE | IN_MOVED_FROM | IN_DELETE | IN_ONLYDIR)
        < 0)
        changes.reset();
    return changes;
}

int millisecondsUntil(std::chrono::steady_clock::time_point end)
{
    auto rest = std::chrono::ceil<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
    return static_cast<int>(std::clamp<std::int64_t>(rest.count(), 0, INT_MAX));
}

} // namespace

PostUpdate::PostUpdate()
    : _oldVersion(installedVersion()),
      _oldApplication(parentApplication()),
      _changes(watchedInstallation())
{
}

std::optional<VersionNumber> PostUpdate::installedVersion() const
{
    auto manifest =
        InstallationManifest::inFolder(platform::systemPath(std::string("/") + InstallationManifest::productFolder));
    return manifest ? VersionNumber::parse(manifest->version) : std::nullopt;
}

bool PostUpdate::isReplaced() const
{
    auto version = installedVersion();
    return version && version > _oldVersion;
}

// While the old version is kept, it may come back.
bool PostUpdate::isOnTrial() const
{
    return platform::fileExists(platform::systemPath(std::string("/") + InstallationManifest::stagingFolder));
}

PostUpdate::Outcome PostUpdate::run()
{
    if (!waitForNewVersion())
        return Outcome::NoNewVersion;
    ZRKLogMessage(LogLevelInfo, "The new version is in place.");
    if (!waitForHelper())
        ZRKLogMessage(LogLevelError, "The new scheduler helper does not answer.");
    endOldApplication();
    auto application =
        platform::systemPath(std::string("/") + InstallationManifest::productFolder + "/bin/").append(applicationName);
    return platform::launch({application}) ? Outcome::Started : Outcome::NotStarted;
}

bool PostUpdate::waitForNewVersion()
{
    const auto end = Clock::now() + installLimit;
    while (!isReplaced()) {
        if (!waitForChange(end) || Clock::now() >= end)
            return isReplaced();
    }
    const auto trialEnd = Clock::now() + trialLimit;
    while (isReplaced() && isOnTrial() && Clock::now() < trialEnd)
        waitForChange(std::min(trialEnd, Clock::now() + lookAgain));
    return isReplaced();
}

bool PostUpdate::waitForChange(Clock::time_point end)
{
    std::array<pollfd, 2> waiting{{{_changes.get(), POLLIN, 0}, {_oldApplication.get(), POLLIN, 0}}};
    if (::poll(waiting.data(), waiting.size(), millisecondsUntil(end)) < 0 && errno != EINTR)
        return false;
    std::array<char, 4096> events{};
    while (::read(_changes.get(), events.data(), events.size()) > 0) { }
    return waiting[1].revents == 0;
}

// The application would say that there is none if it were started before.
bool PostUpdate::waitForHelper() const
{
    auto messager = BRVHelperMessager::create();
    for (const auto end = Clock::now() + helperLimit; Clock::now() < end; std::this_thread::sleep_for(askAgain)) {
        if (messager->sendSynchronousMessage(BRVMessageGetAutoUpdates))
            return true;
    }
    return false;
}

// It may ask a person something first, who may take any time.
void PostUpdate::endOldApplication() const
{
    if (!_oldApplication || ::pidfd_send_signal(_oldApplication.get(), SIGTERM, nullptr, 0) != 0)
        return;
    pollfd waiting{_oldApplication.get(), POLLIN, 0};
    while (::poll(&waiting, 1, -1) < 0 && errno == EINTR) { }
}

} // namespace helper
