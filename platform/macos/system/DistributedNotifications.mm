#include "platform/DistributedNotifications.h"

#include "platform/macos/system/Foundation.h"

#include <map>
#include <unistd.h>

namespace platform {

namespace {

// What the centre gave for each observer. Main thread.
std::map<const void*, id>& observations()
{
    static auto& shared = *new std::map<const void*, id>; // outlives observers that end with the process
    return shared;
}

} // namespace

DistributedNotificationObserver::DistributedNotificationObserver(const std::string& name, std::function<void()> handler)
{
    observations()[this] =
        [NSDistributedNotificationCenter.defaultCenter addObserverForName:foundation::string(name)
                                                                   object:nil
                                                                    queue:NSOperationQueue.mainQueue
                                                               usingBlock:^(NSNotification*) { handler(); }];
}

DistributedNotificationObserver::~DistributedNotificationObserver()
{
    const auto found = observations().find(this);
    [NSDistributedNotificationCenter.defaultCenter removeObserver:found->second];
    observations().erase(found);
}

// A daemon has no session of its own, and what it posts is for everybody's.
bool postDistributedNotification(const std::string& name)
{
    @autoreleasepool {
        CFOptionFlags options = kCFNotificationDeliverImmediately;
        if (::geteuid() == 0)
            options |= kCFNotificationPostToAllSessions;
        CFNotificationCenterPostNotificationWithOptions(CFNotificationCenterGetDistributedCenter(),
                                                        (__bridge CFStringRef)foundation::string(name), nullptr,
                                                        nullptr, options);
        return true;
    }
}

} // namespace platform
