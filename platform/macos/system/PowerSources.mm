#include "platform/PowerSources.h"

#import <Foundation/Foundation.h>
#import <IOKit/ps/IOPowerSources.h>

// Of the framework, though not of its headers.
extern "C" CFBooleanRef IOPSPowerSourceSupported(CFTypeRef information, CFStringRef type);

namespace platform {

std::optional<bool> supportsBatteryPower()
{
    const CFTypeRef information = IOPSCopyPowerSourcesInfo();
    if (!information)
        return std::nullopt;
    const bool supported = IOPSPowerSourceSupported(information, CFSTR(kIOPMBatteryPowerKey)) == kCFBooleanTrue;
    CFRelease(information);
    return supported;
}

} // namespace platform
