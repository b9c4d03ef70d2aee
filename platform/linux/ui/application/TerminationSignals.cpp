#include "platform/linux/ui/application/TerminationSignals.h"

#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <sys/eventfd.h>

namespace platform::ui {

namespace {

constexpr std::array Signals{SIGTERM, SIGINT, SIGHUP};

std::atomic<int> handlerDescriptor = -1; // all that a handler can reach
static_assert(std::atomic<int>::is_always_lock_free);

void noteSignal(int)
{
    const int saved = errno;
    eventfd_write(handlerDescriptor, 1);
    errno = saved;
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

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> callBack)
    : _descriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      _notifier(_descriptor.get(), QSocketNotifier::Read)
{
    QObject::connect(&_notifier, &QSocketNotifier::activated, &_notifier,
                     [descriptor = _descriptor.get(), callBack = std::move(callBack)] {
                         eventfd_t count = 0;
                         eventfd_read(descriptor, &count);
                         callBack();
                     });
    handlerDescriptor = _descriptor.get();
    for (const int number : Signals)
        handle(number, noteSignal);
}

TerminationSignals::~TerminationSignals()
{
    for (const int number : Signals)
        handle(number, SIG_DFL);
    handlerDescriptor = -1;
    _notifier.setEnabled(false);
}

} // namespace platform::ui
