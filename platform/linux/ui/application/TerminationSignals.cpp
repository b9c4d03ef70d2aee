#include "platform/linux/ui/application/TerminationSignals.h"

#include <array>
#include <atomic>
#include <csignal>

namespace platform::ui {

namespace {

constexpr std::array Signals{SIGTERM, SIGINT, SIGHUP};

std::atomic<const EventDescriptor*> handlerDescriptor = nullptr; // all that a handler can reach
static_assert(std::atomic<const EventDescriptor*>::is_always_lock_free);

void noteSignal(int)
{
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

} // namespace

TerminationSignals::TerminationSignals(std::function<void()> callBack)
    : _notifier(_descriptor.get(), QSocketNotifier::Read)
{
    QObject::connect(&_notifier, &QSocketNotifier::activated, &_notifier, [this, callBack = std::move(callBack)] {
        _descriptor.reset();
        callBack();
    });
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
}

} // namespace platform::ui
