#include "platform/BackgroundItem.h"

#include "platform/Localization.h"
#include "platform/macos/system/Foundation.h"

// What the class SMAppService itself answers to. It is looked up by its name, since older systems have none.
@protocol BRVAppService
- (NSInteger)statusForLegacyURL:(NSURL*)url;
- (void)openSystemSettingsLoginItems;
@end

namespace platform {

namespace {

id<BRVAppService> appService(SEL operation)
{
    const id service = NSClassFromString(@"SMAppService");
    return [service respondsToSelector:operation] ? service : nil;
}

} // namespace

std::optional<BackgroundItemStatus> backgroundItemStatus(const std::string& launchDaemonPath)
{
    @autoreleasepool {
        const id<BRVAppService> service = appService(@selector(statusForLegacyURL:));
        if (!service)
            return std::nullopt;
        NSURL* const url = [NSURL fileURLWithPath:foundation::string(launchDaemonPath) isDirectory:NO];
        const NSInteger status = [service statusForLegacyURL:url];
        if (status < 0 || status > static_cast<NSInteger>(BackgroundItemStatus::NotFound))
            return std::nullopt;
        return static_cast<BackgroundItemStatus>(status);
    }
}

bool openBackgroundItemSettings()
{
    @autoreleasepool {
        const id<BRVAppService> service = appService(@selector(openSystemSettingsLoginItems));
        [service openSystemSettingsLoginItems];
        return service != nil;
    }
}

std::string backgroundItemAdvice()
{
    return localizedString("Open System Settings yourself, and look for Login Items there.");
}

std::string backupSettingsAdvice()
{
    return localizedString("Open System Preferences yourself, and look for Time Machine there.");
}

} // namespace platform
