#include "platform/NetworkRoute.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/system/MachineEvents.h"
#include "platform/QueueTelling.h"

#include <mutex>
#import <SystemConfiguration/SystemConfiguration.h>

namespace platform {

namespace {

NSString* const globalIPv4 = @"State:/Network/Global/IPv4";
NSString* const globalIPv6 = @"State:/Network/Global/IPv6";

NSDictionary* valueOf(SCDynamicStoreRef store, NSString* key)
{
    return CFBridgingRelease(SCDynamicStoreCopyValue(store, (__bridge CFStringRef)key));
}

bool isTunnel(NSString* interface)
{
    for (NSString* const kind in @[ @"utun", @"ipsec", @"ppp", @"tun", @"tap", @"gif", @"stf" ]) {
        if ([interface hasPrefix:kind])
            return true;
    }
    return false;
}

// Of the first service in the user's order that has a way out of its own.
NSString* interfaceBelowTunnel(SCDynamicStoreRef store)
{
    NSArray* const order = valueOf(store, @"Setup:/Network/Global/IPv4")[@"ServiceOrder"];
    for (NSString* const service in order) {
        for (NSString* const kind in @[ @"IPv4", @"IPv6" ]) {
            NSDictionary* const state =
                valueOf(store, [NSString stringWithFormat:@"State:/Network/Service/%@/%@", service, kind]);
            NSString* const interface = state[@"InterfaceName"];
            if (interface && state[@"Router"] && !isTunnel(interface))
                return interface;
        }
    }
    return nil;
}

NSString* primaryInterface(SCDynamicStoreRef store)
{
    for (NSString* const key in @[ globalIPv4, globalIPv6 ]) {
        NSString* const interface = valueOf(store, key)[@"PrimaryInterface"];
        if (interface)
            return isTunnel(interface) ? interfaceBelowTunnel(store) : interface;
    }
    return nil;
}

bool isEthernet(NSString* interface)
{
    NSArray* const all = CFBridgingRelease(SCNetworkInterfaceCopyAll());
    for (const id each in all) {
        const auto found = (__bridge SCNetworkInterfaceRef)each;
        NSString* const name = (__bridge NSString*)SCNetworkInterfaceGetBSDName(found);
        if ([name isEqualToString:interface])
            return CFEqual(SCNetworkInterfaceGetInterfaceType(found), kSCNetworkInterfaceTypeEthernet) != 0;
    }
    return false;
}

NetworkRoute readRoute(SCDynamicStoreRef store)
{
    @autoreleasepool {
        NSString* const interface = primaryInterface(store);
        if (!interface)
            return {.isKnown = true, .isWired = false, .interface = {}};
        NSString* const key = [NSString stringWithFormat:@"State:/Network/Interface/%@/Link", interface];
        NSDictionary* const link = valueOf(store, key);
        const bool hasCarrier = [link[@"Active"] boolValue];
        return {.isKnown = true,
                .isWired = hasCarrier && isEthernet(interface),
                .interface = foundation::string(interface)};
    }
}

class MacNetworkRoute final : public Condition<NetworkRoute> {
public:
    MacNetworkRoute(std::shared_ptr<Queue> queue, std::function<void()> handler)
        : _telling(std::move(queue), std::move(handler))
    {
        @autoreleasepool {
            SCDynamicStoreContext context{0, this, nullptr, nullptr, nullptr};
            const auto changed = [](SCDynamicStoreRef, CFArrayRef, void* route) {
                static_cast<MacNetworkRoute*>(route)->update();
            };
            _store = CFBridgingRelease(
                SCDynamicStoreCreate(kCFAllocatorDefault, CFSTR("com.zerkolin.brevane"), changed, &context));
            if (!_store)
                return;
            SCDynamicStoreSetNotificationKeys(
                store(), (__bridge CFArrayRef) @[ globalIPv4, globalIPv6 ],
                (__bridge CFArrayRef) @[ @"State:/Network/Interface/.*/Link", @"State:/Network/Service/.*/IPv[46]" ]);
            SCDynamicStoreSetDispatchQueue(store(), machineEventsQueue());
            const std::lock_guard lock(_mutex);
            _route = readRoute(store());
        }
    }

    ~MacNetworkRoute() override
    {
        if (_store)
            SCDynamicStoreSetDispatchQueue(store(), nullptr);
        dispatch_sync(machineEventsQueue(), ^{}); // what was under way has ended
    }

    NetworkRoute current() const override
    {
        const std::lock_guard lock(_mutex);
        return _route;
    }

private:
    SCDynamicStoreRef store() const { return (__bridge SCDynamicStoreRef)_store; }

    void update()
    {
        auto found = readRoute(store());
        const std::lock_guard lock(_mutex);
        if (found == _route)
            return;
        _route = std::move(found);
        _telling.tell();
    }

    QueueTelling<> _telling;
    id _store = nil;
    mutable std::mutex _mutex; // of:
    NetworkRoute _route;
};

} // namespace

FollowedCondition<NetworkRoute> followNetworkRoute(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<MacNetworkRoute>(std::move(queue), std::move(handler));
}

} // namespace platform
