#include "platform/Volumes.h"

#include "platform/macos/system/Foundation.h"

#include <algorithm>
#import <AppKit/AppKit.h>
#import <DiskArbitration/DiskArbitration.h>
#import <IOKit/IOKitLib.h>
#include <map>
#include <sys/mount.h>

namespace platform {

namespace {

static_assert(MountedFileSystem::Local == MNT_LOCAL);

NSURL* volumeURL(const std::string& path)
{
    return [NSURL fileURLWithPath:foundation::string(path) isDirectory:YES];
}

id volumeValue(const std::string& path, NSURLResourceKey key)
{
    id value = nil;
    return [volumeURL(path) getResourceValue:&value forKey:key error:nil] ? value : nil;
}

class ArbitrationSession final : public DiskSession {
public:
    explicit ArbitrationSession(DASessionRef session) : _session(CFBridgingRelease(session)) { }

    std::optional<VolumeService> serviceOfVolume(const std::string& url) override
    {
        @autoreleasepool {
            const id disk = CFBridgingRelease(DADiskCreateFromVolumePath(
                kCFAllocatorDefault, (__bridge DASessionRef)_session, (__bridge CFURLRef)volumeURL(url)));
            const char* const name = disk ? DADiskGetBSDName((__bridge DADiskRef)disk) : nullptr;
            if (!name)
                return std::nullopt;
            const CFMutableDictionaryRef matching = IOBSDNameMatching(kIOMasterPortDefault, 0, name);
            if (!matching)
                return std::nullopt;
            // Takes the dictionary.
            const io_service_t service = IOServiceGetMatchingService(kIOMasterPortDefault, matching);
            if (service == IO_OBJECT_NULL)
                return std::nullopt;
            VolumeService found{static_cast<bool>(IOObjectConformsTo(service, "AppleAPFSVolume")), std::nullopt};
            const id role =
                CFBridgingRelease(IORegistryEntryCreateCFProperty(service, CFSTR("Role"), kCFAllocatorDefault, 0));
            IOObjectRelease(service);
            if (role)
                found.role = foundation::propertyList(role);
            return found;
        }
    }

private:
    id _session;
};

// The token of each observation. Main thread.
std::map<const void*, NSArray*>& observations()
{
    static auto& shared = *new std::map<const void*, NSArray*>; // outlives observers that end with the process
    return shared;
}

std::string path(id url)
{
    return [url isKindOfClass:NSURL.class] ? foundation::string([url path]) : std::string();
}

VolumeNotification notificationOf(VolumeNotification::Event event, NSDictionary* information)
{
    return {event, path(information[NSWorkspaceVolumeURLKey]), path(information[NSWorkspaceVolumeOldURLKey]),
            foundation::string(static_cast<NSString*>(information[NSWorkspaceVolumeLocalizedNameKey]))};
}

using VolumeHandler = std::function<void(const VolumeNotification&)>;

// The block has to have the handler itself: it keeps a reference as a reference.
id observe(NSNotificationName name, VolumeNotification::Event event, VolumeHandler handler)
{
    NSNotificationCenter* const center = NSWorkspace.sharedWorkspace.notificationCenter;
    return [center
        addObserverForName:name
                    object:nil
                     queue:NSOperationQueue.mainQueue
                usingBlock:^(NSNotification* notification) { handler(notificationOf(event, notification.userInfo)); }];
}

} // namespace

int numberOfMountedFileSystems()
{
    return ::getfsstat(nullptr, 0, MNT_WAIT);
}

std::vector<MountedFileSystem> mountedFileSystems(int room)
{
    std::vector<struct statfs> table(static_cast<std::size_t>(std::max(room, 0)));
    const int count = ::getfsstat(table.data(), static_cast<int>(table.size() * sizeof table[0]), MNT_WAIT);
    std::vector<MountedFileSystem> systems;
    for (int i = 0; i < std::min(count, room); ++i) {
        const auto& each = table[static_cast<std::size_t>(i)];
        systems.push_back({each.f_mntonname, each.f_flags});
    }
    return systems;
}

std::optional<std::string> localizedVolumeName(const std::string& url)
{
    @autoreleasepool {
        NSString* const name = volumeValue(url, NSURLLocalizedNameKey);
        return name ? std::optional(foundation::string(name)) : std::nullopt;
    }
}

// An icon is asked for by the place of its volume.
std::optional<std::string> effectiveVolumeIcon(const std::string& url)
{
    @autoreleasepool {
        return volumeValue(url, NSURLEffectiveIconKey) ? std::optional(url) : std::nullopt;
    }
}

std::optional<bool> isVolumeBrowsable(const std::string& url)
{
    @autoreleasepool {
        NSNumber* const browsable = volumeValue(url, NSURLVolumeIsBrowsableKey);
        return browsable ? std::optional<bool>(browsable.boolValue) : std::nullopt;
    }
}

std::shared_ptr<DiskSession> DiskSession::create()
{
    return std::make_shared<ArbitrationSession>(DASessionCreate(kCFAllocatorDefault));
}

VolumeObserver::VolumeObserver(VolumeHandler handler)
{
    observations()[this] = @[
        observe(NSWorkspaceDidMountNotification, VolumeNotification::Event::DidMount, handler),
        observe(NSWorkspaceDidUnmountNotification, VolumeNotification::Event::DidUnmount, handler),
        observe(NSWorkspaceDidRenameVolumeNotification, VolumeNotification::Event::DidRename, handler)
    ];
}

VolumeObserver::~VolumeObserver()
{
    const auto found = observations().find(this);
    for (const id token in found->second)
        [NSWorkspace.sharedWorkspace.notificationCenter removeObserver:token];
    observations().erase(found);
}

} // namespace platform
