#include "platform/PowerSources.h"

#include "platform/macos/system/NotifiedCondition.h"

#import <Foundation/Foundation.h>
#import <IOKit/ps/IOPowerSources.h>

// Of the framework, though not of its headers.
extern "C" CFBooleanRef IOPSPowerSourceSupported(CFTypeRef information, CFStringRef type);

namespace platform {

namespace {

PowerState readPowerState()
{
    const CFTypeRef information = IOPSCopyPowerSourcesInfo();
    if (!information)
        return {};
    const CFStringRef source = IOPSGetProvidingPowerSourceType(information);
    const bool onBattery = source && CFStringCompare(source, CFSTR(kIOPMBatteryPowerKey), 0) == kCFCompareEqualTo;
    CFRelease(information);
    return {.isKnown = true, .onBattery = onBattery};
}

} // namespace

std::optional<bool> supportsBatteryPower()
{
    const CFTypeRef information = IOPSCopyPowerSourcesInfo();
    if (!information)
        return std::nullopt;
    const bool supported = IOPSPowerSourceSupported(information, CFSTR(kIOPMBatteryPowerKey)) == kCFBooleanTrue;
    CFRelease(information);
    return supported;
}

FollowedCondition<PowerState> followPowerState(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<NotifiedCondition<PowerState>>(
        readPowerState, std::vector<const char*>{"com.apple.system.powersources.source"}, std::move(queue),
        std::move(handler));
}

} // namespace platform
