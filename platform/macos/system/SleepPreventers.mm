#include "platform/SleepPreventers.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/system/NotifiedCondition.h"

#include <algorithm>
#import <IOKit/pwr_mgt/IOPMLib.h>
#include <libproc.h>
#include <sys/param.h>
#include <unistd.h>

namespace platform {

namespace {

bool preventsSleep(NSDictionary* assertion)
{
    NSString* const type = assertion[(__bridge NSString*)kIOPMAssertionTypeKey];
    NSNumber* const level = assertion[(__bridge NSString*)kIOPMAssertionLevelKey];
    NSArray* const types = @[
        (__bridge NSString*)kIOPMAssertionTypePreventSystemSleep,
        (__bridge NSString*)kIOPMAssertionTypePreventUserIdleSystemSleep,
        (__bridge NSString*)kIOPMAssertionTypePreventUserIdleDisplaySleep, @"NoIdleSleepAssertion",
        @"NoDisplaySleepAssertion"
    ];
    return level.intValue != 0 && [types containsObject:type];
}

// As it calls itself; empty when it has ended.
std::string nameOfProcess(pid_t process)
{
    char name[2 * MAXCOMLEN + 1] = "";
    const int length = ::proc_name(process, name, sizeof name);
    return {name, static_cast<std::size_t>(std::max(length, 0))};
}

// The system's own power management holds one as long as a display is on, which is no program that prevents sleep.
// Time Machine's are no hindrance of a backup but a sign of one.
bool isOfSystem(const std::string& process)
{
    return process == "powerd" || process == "backupd" || process == "backupd-helper";
}

SleepPreventers readPreventers()
{
    @autoreleasepool {
        CFDictionaryRef found = nullptr;
        if (IOPMCopyAssertionsByProcess(&found) != kIOReturnSuccess)
            return {};
        NSDictionary<NSNumber*, NSArray<NSDictionary*>*>* const processes = CFBridgingRelease(found);
        SleepPreventers preventers{.isKnown = true, .names = {}};
        for (NSNumber* const number in processes) {
            if (number.intValue == ::getpid())
                continue;
            const auto process = nameOfProcess(number.intValue);
            if (isOfSystem(process))
                continue;
            for (NSDictionary* const assertion in processes[number]) {
                NSString* const name = assertion[(__bridge NSString*)kIOPMAssertionNameKey];
                if (preventsSleep(assertion))
                    preventers.names.push_back(process.empty() ? foundation::string(name) : process);
            }
        }
        std::sort(preventers.names.begin(), preventers.names.end());
        preventers.names.erase(std::unique(preventers.names.begin(), preventers.names.end()), preventers.names.end());
        return preventers;
    }
}

} // namespace

FollowedCondition<SleepPreventers> followSleepPreventers(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<NotifiedCondition<SleepPreventers>>(
        readPreventers,
        std::vector<const char*>{"com.apple.system.powermanagement.assertions.anychange",
                                 "com.apple.system.powermanagement.assertions"},
        std::move(queue), std::move(handler));
}

} // namespace platform
