#include "platform/macos/ui/TerminationSignals.h"

#include <atomic>
#include <csignal>
#import <Foundation/Foundation.h>
#include <memory>
#include <unistd.h>

namespace platform::ui {

namespace {

constexpr int64_t hearingLimit = 800 * NSEC_PER_MSEC;

// False for a signal that whoever started the process wants ignored.
bool takeOver(int number)
{
    struct sigaction current{};
    if (sigaction(number, nullptr, &current) != 0 || current.sa_handler == SIG_IGN)
        return false;
    // Nothing by itself, and not ignored, which tools that this process starts would inherit.
    struct sigaction action{};
    action.sa_handler = [](int) { };
    action.sa_flags = SA_RESTART;
    return sigaction(number, &action, nullptr) == 0;
}

void endBy(int number)
{
    std::signal(number, SIG_DFL);
    ::kill(::getpid(), number);
}

} // namespace

void handleTerminationSignals(std::function<void()> callBack)
{
    static NSMutableArray* const sources = [NSMutableArray array];
    dispatch_queue_t const queue = dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        if (!takeOver(number))
            continue;
        dispatch_source_t const source =
            dispatch_source_create(DISPATCH_SOURCE_TYPE_SIGNAL, static_cast<uintptr_t>(number), 0, queue);
        dispatch_source_set_event_handler(source, ^{
            const auto isHeard = std::make_shared<std::atomic<bool>>(false);
            dispatch_async(dispatch_get_main_queue(), ^{
                *isHeard = true;
                callBack();
            });
            dispatch_after(dispatch_time(DISPATCH_TIME_NOW, hearingLimit), queue, ^{
                if (!*isHeard)
                    endBy(number);
            });
        });
        dispatch_resume(source);
        [sources addObject:source];
    }
}

} // namespace platform::ui
