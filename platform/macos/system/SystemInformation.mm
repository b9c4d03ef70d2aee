#include "platform/SystemInformation.h"

#include "platform/macos/system/Foundation.h"
#include "platform/Root.h"

#include <unistd.h>

namespace platform {

bool offersOperatingSystemQuery()
{
    return [NSProcessInfo instancesRespondToSelector:@selector(isOperatingSystemAtLeastVersion:)];
}

bool isOperatingSystemAtLeast(OperatingSystemVersion version)
{
    if (@available(macOS 10.10, *))
        return [NSProcessInfo.processInfo
            isOperatingSystemAtLeastVersion:NSOperatingSystemVersion{version.major, version.minor, version.patch}];
    return false;
}

std::uint32_t userIdentifier()
{
    return ::getuid();
}

std::uint32_t effectiveUserIdentifier()
{
    return ::geteuid();
}

std::int32_t processIdentifier()
{
    return ::getpid();
}

std::string homeDirectory()
{
    @autoreleasepool {
        std::string home = foundation::string(NSHomeDirectory());
        while (home.ends_with('/'))
            home.pop_back();
        return home;
    }
}

std::string bundleVersion()
{
    @autoreleasepool {
        const id version = [NSBundle.mainBundle objectForInfoDictionaryKey:(__bridge NSString*)kCFBundleVersionKey];
        return [version isKindOfClass:NSString.class] ? foundation::string(static_cast<NSString*>(version))
                                                      : std::string();
    }
}

void disableSuddenTermination()
{
    [NSProcessInfo.processInfo disableSuddenTermination];
}

void enableSuddenTermination()
{
    [NSProcessInfo.processInfo enableSuddenTermination];
}

std::string systemPath(std::string_view path)
{
    return systemRoot().append(path);
}

bool fileExists(const std::string& path)
{
    @autoreleasepool {
        return [NSFileManager.defaultManager fileExistsAtPath:foundation::string(path)];
    }
}

} // namespace platform
