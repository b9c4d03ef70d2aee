#include "platform/SleepPreventers.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/system/NotifiedCondition.h"

#include <algorithm>
#import <IOKit/pwr_mgt/IOPMLib.h>
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
            for (NSDictionary* const assertion in processes[number]) {
                NSString* const process = assertion[@"Process Name"];
                NSString* const name = process ? process : assertion[(__bridge NSString*)kIOPMAssertionNameKey];
                if (preventsSleep(assertion))
                    preventers.names.push_back(name ? foundation::string(name) : std::string());
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
