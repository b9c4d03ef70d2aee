#include "helper/postupdate/ProductWatch.h"

#include "helper/linux/installation/InstallationManifest.h"
#include "platform/FileDescriptor.h"
#include "platform/linux/system/processes/Launch.h"
#include "platform/SystemInformation.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <csignal>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/inotify.h>
#include <unistd.h>

extern "C" {
#include <sys/pidfd.h> // does not say so itself in glibc 2.36
}

namespace helper {

namespace {

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

class FolderWatch final : public ProductWatch {
public:
    std::optional<VersionNumber> installedVersion() const override;
    bool isOnTrial() const override;
    bool waitForChange(Clock::time_point end) override;
    void endApplication() override;
    bool startApplication() override;

private:
    platform::FileDescriptor _application = parentApplication(); // none when somebody else started this program
    platform::FileDescriptor _changes = watchedInstallation();
};

std::optional<VersionNumber> FolderWatch::installedVersion() const
{
    auto manifest =
        InstallationManifest::inFolder(platform::systemPath(std::string("/") + InstallationManifest::productFolder));
    return manifest ? VersionNumber::parse(manifest->version) : std::nullopt;
}

bool FolderWatch::isOnTrial() const
{
    return platform::fileExists(platform::systemPath(std::string("/") + InstallationManifest::stagingFolder));
}

bool FolderWatch::waitForChange(Clock::time_point end)
{
    std::array<pollfd, 2> waiting{{{_changes.get(), POLLIN, 0}, {_application.get(), POLLIN, 0}}};
    if (::poll(waiting.data(), waiting.size(), millisecondsUntil(end)) < 0 && errno != EINTR)
        return false;
    std::array<char, 4096> events{};
    while (::read(_changes.get(), events.data(), events.size()) > 0) { }
    return waiting[1].revents == 0;
}

void FolderWatch::endApplication()
{
    if (!_application || ::pidfd_send_signal(_application.get(), SIGTERM, nullptr, 0) != 0)
        return;
    pollfd waiting{_application.get(), POLLIN, 0};
    while (::poll(&waiting, 1, -1) < 0 && errno == EINTR) { }
}

bool FolderWatch::startApplication()
{
    return platform::launch({platform::systemPath(std::string("/") + InstallationManifest::productFolder + "/bin/")
                                 .append(applicationName)});
}

} // namespace

std::unique_ptr<ProductWatch> ProductWatch::create()
{
    return std::make_unique<FolderWatch>();
}

} // namespace helper
