#include "platform/ui/BareApplication.h"

#import <AppKit/AppKit.h>

namespace platform::ui {

int runWithControls(int, char**, const std::function<int()>& body)
{
    @autoreleasepool {
        NSApplication* const application = NSApplication.sharedApplication;
        application.activationPolicy = NSApplicationActivationPolicyProhibited;
        [application finishLaunching];
        return body();
    }
}

bool serveUntil(const std::function<bool()>& isDone, double seconds)
{
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:seconds];
    while (!isDone()) {
        if (limit.timeIntervalSinceNow < 0)
            return false;
        @autoreleasepool {
            [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode beforeDate:[NSDate dateWithTimeIntervalSinceNow:0.02]];
        }
    }
    return true;
}

} // namespace platform::ui
