#include "helper/postupdate/ProductWatch.h"

#include "helper/macos/packages/PackageInstallation.h"
#include "platform/FileDescriptor.h"
#include "platform/Workspace.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <libproc.h>
#include <string>
#include <sys/event.h>
#include <unistd.h>
#include <vector>

namespace helper {

namespace {

using platform::FileDescriptor;

constexpr const char* application = "/Applications/Brevane.app";
constexpr std::string_view applicationProgram = "/Brevane.app/Contents/MacOS/Brevane";
constexpr const char* receipts = "/private/var/db/receipts";
// The receipts may stand elsewhere one day.
constexpr std::chrono::seconds lookAgain{10};

std::string programOf(pid_t process)
{
    std::array<char, PROC_PIDPATHINFO_MAXSIZE> path{};
    const int length = ::proc_pidpath(process, path.data(), path.size());
    return {path.data(), length > 0 ? static_cast<std::size_t>(length) : 0};
}

bool isOfThisUser(pid_t process)
{
    proc_bsdshortinfo information{};
    const int size = sizeof information;
    return ::proc_pidinfo(process, PROC_PIDT_SHORTBSDINFO, 0, &information, size) == size
        && information.pbsi_uid == ::getuid();
}

std::vector<pid_t> processes()
{
    std::vector<pid_t> found(static_cast<std::size_t>(std::max(::proc_listallpids(nullptr, 0), 0)) + 64);
    const int count = ::proc_listallpids(found.data(), static_cast<int>(found.size() * sizeof(pid_t)));
    found.resize(static_cast<std::size_t>(std::clamp(count, 0, static_cast<int>(found.size()))));
    return found;
}

class PackageWatch final : public ProductWatch {
public:
    PackageWatch() : _events(::kqueue())
    {
        ::fcntl(_events.get(), F_SETFD, FD_CLOEXEC);
        _receipts = FileDescriptor(::open(receipts, O_EVTONLY | O_CLOEXEC));
        if (_receipts)
            watch(static_cast<uintptr_t>(_receipts.get()), EVFILT_VNODE, EV_CLEAR, NOTE_WRITE);
        findApplication();
    }

    std::optional<VersionNumber> installedVersion() const override
    {
        const auto receipt = PackageTools().receipt(PackageInstallation::Identifier);
        return receipt && *receipt ? VersionNumber::parse((*receipt)->version) : std::nullopt;
    }
    bool isOnTrial() const override { return false; }

    bool waitForChange(Clock::time_point end) override
    {
        const auto left =
            std::clamp<std::chrono::nanoseconds>(end - Clock::now(), std::chrono::nanoseconds(0), lookAgain);
        wait(left);
        return !_hasEnded;
    }

    void endApplication() override
    {
        if (_application == 0 || _hasEnded || ::kill(_application, SIGTERM) != 0)
            return;
        while (!_hasEnded) {
            if (!wait(std::nullopt))
                return;
        }
    }

    bool startApplication() override { return platform::openFile(application); }

private:
    // The system starts this program for the application, which is not its parent then. Held before it is looked at
    // once more: what has ended before would be another one by then.
    void findApplication()
    {
        const auto isApplication = [](pid_t process) {
            return isOfThisUser(process) && programOf(process).ends_with(applicationProgram);
        };
        for (const auto process : processes()) {
            if (process > 1 && isApplication(process)
                && watch(static_cast<uintptr_t>(process), EVFILT_PROC, 0, NOTE_EXIT) && isApplication(process)) {
                _application = process;
                return;
            }
        }
    }

    bool watch(uintptr_t what, std::int16_t filter, std::uint16_t flags, std::uint32_t events) const
    {
        struct kevent change{};
        EV_SET(&change, what, filter, EV_ADD | flags, events, 0, nullptr);
        return ::kevent(_events.get(), &change, 1, nullptr, 0, nullptr) == 0;
    }

    // False when nothing can be waited for.
    bool wait(std::optional<std::chrono::nanoseconds> limit)
    {
        timespec time{};
        if (limit) {
            const auto seconds = std::chrono::floor<std::chrono::seconds>(*limit);
            time = {static_cast<time_t>(seconds.count()), static_cast<long>((*limit - seconds).count())};
        }
        struct kevent event{};
        const int count = ::kevent(_events.get(), nullptr, 0, &event, 1, limit ? &time : nullptr);
        if (count == 1 && event.filter == EVFILT_PROC && static_cast<pid_t>(event.ident) == _application)
            _hasEnded = true;
        return count >= 0 || errno == EINTR;
    }

    FileDescriptor _events;
    FileDescriptor _receipts;
    pid_t _application = 0; // none
    bool _hasEnded = false;
};

} // namespace

std::unique_ptr<ProductWatch> ProductWatch::create()
{
    return std::make_unique<PackageWatch>();
}

} // namespace helper
