#include "platform/linux/ui/application/TerminationSignals.h"

#include "platform/linux/system/queues/BlockedSignals.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <poll.h>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <vector>

namespace platform::ui {

namespace {

constexpr std::array Signals{SIGTERM, SIGINT, SIGHUP};

constexpr int hearingLimit = 800; // milliseconds

std::atomic<const EventDescriptor*> handlerDescriptor = nullptr; // all that a handler can reach
std::atomic<int> lastSignal = SIGTERM;
static_assert(std::atomic<const EventDescriptor*>::is_always_lock_free && std::atomic<int>::is_always_lock_free);

void noteSignal(int number)
{
    lastSignal = number;
    if (const auto* const descriptor = handlerDescriptor.load())
        descriptor->signal();
}

void handle(int number, void (*handler)(int))
{
    struct sigaction current{};
    if (sigaction(number, nullptr, &current) == 0 && current.sa_handler == SIG_IGN)
        return;
    struct sigaction action{};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigaction(number, &action, nullptr);
}

// Of the sockets that lead to the display.
bool leadsToDisplay(int descriptor)
{
    sockaddr_un peer{};
    socklen_t length = sizeof peer;
    if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&peer), &length) != 0 || peer.sun_family != AF_UNIX)
        return false;
    const auto size = static_cast<std::size_t>(length) - offsetof(sockaddr_un, sun_path);
    const std::string_view path(peer.sun_path, std::min(size, sizeof peer.sun_path));
    return path.find("/.X11-unix/X") != path.npos || path.find("/wayland-") != path.npos;
}

std::vector<pollfd> displaySockets()
{
    constexpr int highest = 64; // it was connected early
    std::vector<pollfd> sockets;
    for (int descriptor = 0; descriptor < highest; ++descriptor) {
        if (leadsToDisplay(descriptor))
            sockets.push_back({descriptor, POLLRDHUP, 0});
    }
    return sockets;
}

// False when the time is over.
bool waitForAny(std::vector<pollfd>& descriptors, int limit)
{
    int count = 0;
    do {
        count = ::poll(descriptors.data(), descriptors.size(), limit);
    } while (count < 0 && errno == EINTR);
    return count > 0;
}

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> callBack)
    : _notifier(_descriptor.get(), QSocketNotifier::Read)
{
    QObject::connect(&_notifier, &QSocketNotifier::activated, &_notifier, [this, callBack = std::move(callBack)] {
        _descriptor.reset();
        _heard.signal();
        callBack();
    });
    {
        const BlockedSignals blocked;
        _watch = std::thread([this] { watch(); });
    }
    handlerDescriptor = &_descriptor;
    for (const int number : Signals)
        handle(number, noteSignal);
}

TerminationSignals::~TerminationSignals()
{
    for (const int number : Signals)
        handle(number, SIG_DFL);
    handlerDescriptor = nullptr;
    _notifier.setEnabled(false);
    _end.signal();
    _watch.join();
}

void TerminationSignals::watch() const
{
    auto awaited = displaySockets();
    awaited.push_back({_descriptor.get(), POLLIN, 0});
    awaited.push_back({_end.get(), POLLIN, 0});
    waitForAny(awaited, -1);
    std::vector<pollfd> answers{{_heard.get(), POLLIN, 0}, {_end.get(), POLLIN, 0}};
    if (waitForAny(answers, hearingLimit))
        return;
    const int number = lastSignal;
    handle(number, SIG_DFL);
    ::kill(::getpid(), number);
}

} // namespace platform::ui
