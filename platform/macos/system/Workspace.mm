#include "platform/Workspace.h"

#include "platform/macos/system/Foundation.h"

#import <AppKit/AppKit.h>

namespace platform {

bool openURL(const std::string& url)
{
    @autoreleasepool {
        NSURL* const target = [NSURL URLWithString:foundation::string(url)];
        return target && [NSWorkspace.sharedWorkspace openURL:target];
    }
}

bool openFile(const std::string& path)
{
    @autoreleasepool {
        return [NSWorkspace.sharedWorkspace openURL:[NSURL fileURLWithPath:foundation::string(path)]];
    }
}

} // namespace platform
