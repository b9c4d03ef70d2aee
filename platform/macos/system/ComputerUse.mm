#include "platform/ComputerUse.h"

#include "platform/Clock.h"
#include "platform/macos/system/Foundation.h"
#include "platform/macos/system/MachineEvents.h"
#include "platform/QueueTelling.h"

#import <IOKit/IOKitLib.h>
#import <IOKit/pwr_mgt/IOPM.h>
#include <mutex>
#import <SystemConfiguration/SystemConfiguration.h>

namespace platform {

namespace {

using std::chrono::nanoseconds;

// Who has touched nothing for so long does not use the computer.
constexpr std::chrono::seconds inUse{60};
// The system tells neither that somebody stops using it nor that somebody begins again.
constexpr std::chrono::seconds lookAgain{300};

id propertyOfService(const char* service, CFStringRef key)
{
    const io_service_t found = IOServiceGetMatchingService(kIOMasterPortDefault, IOServiceMatching(service));
    if (found == IO_OBJECT_NULL)
        return nil;
    const id value = CFBridgingRelease(IORegistryEntryCreateCFProperty(found, key, kCFAllocatorDefault, 0));
    IOObjectRelease(found);
    return value;
}

std::optional<nanoseconds> idleTime()
{
    NSNumber* const time = propertyOfService("IOHIDSystem", CFSTR("HIDIdleTime"));
    return time ? std::optional(nanoseconds(time.longLongValue)) : std::nullopt;
}

bool isSomebodyThere()
{
    NSString* const name = CFBridgingRelease(SCDynamicStoreCopyConsoleUser(nullptr, nullptr, nullptr));
    return name.length > 0 && ![name isEqualToString:@"loginwindow"];
}

// With another display the lid does not send it to sleep.
bool isLidClosedForGood()
{
    NSNumber* const closed = propertyOfService("IOPMrootDomain", CFSTR("AppleClamshellState"));
    NSNumber* const causesSleep = propertyOfService("IOPMrootDomain", CFSTR("AppleClamshellCausesSleep"));
    return closed.boolValue && causesSleep.boolValue;
}

ComputerUse readUse()
{
    @autoreleasepool {
        const auto idle = idleTime();
        ComputerUse use{
            .isKnown = idle.has_value(), .isPassive = !isSomebodyThere() || isLidClosedForGood(), .unusedSince = {}};
        if (idle && *idle >= inUse)
            use.unusedSince = readClocks().sinceBoot - *idle;
        return use;
    }
}

class MacComputerUse final : public Condition<ComputerUse> {
public:
    MacComputerUse(std::shared_ptr<Queue> queue, std::function<void()> handler)
        : _telling(std::move(queue), std::move(handler)),
          _timer(dispatch_source_create(DISPATCH_SOURCE_TYPE_TIMER, 0, 0, machineEventsQueue()))
    {
        followConsole();
        followLid();
        dispatch_source_set_event_handler(_timer, ^{ update(); });
        dispatch_sync(machineEventsQueue(), ^{ update(); });
        dispatch_resume(_timer);
    }

    ~MacComputerUse() override
    {
        dispatch_source_cancel(_timer);
        if (_store)
            SCDynamicStoreSetDispatchQueue((__bridge SCDynamicStoreRef)_store, nullptr);
        if (_lid != IO_OBJECT_NULL)
            IOObjectRelease(_lid);
        if (_port)
            IONotificationPortDestroy(_port);
        dispatch_sync(machineEventsQueue(), ^{}); // what was under way has ended
    }

    // Looked up now, since the return of a person is not told.
    ComputerUse current() const override { return readUse(); }

private:
    void followConsole()
    {
        SCDynamicStoreContext context{0, this, nullptr, nullptr, nullptr};
        const auto changed = [](SCDynamicStoreRef, CFArrayRef, void* use) {
            static_cast<MacComputerUse*>(use)->update();
        };
        _store = CFBridgingRelease(
            SCDynamicStoreCreate(kCFAllocatorDefault, CFSTR("com.zerkolin.brevane"), changed, &context));
        if (!_store)
            return;
        const auto store = (__bridge SCDynamicStoreRef)_store;
        SCDynamicStoreSetNotificationKeys(store, (__bridge CFArrayRef) @[ @"State:/Users/ConsoleUser" ], nullptr);
        SCDynamicStoreSetDispatchQueue(store, machineEventsQueue());
    }

    void followLid()
    {
        const auto changed = [](void* use, io_service_t, natural_t, void*) {
            static_cast<MacComputerUse*>(use)->update();
        };
        const io_service_t root =
            IOServiceGetMatchingService(kIOMasterPortDefault, IOServiceMatching("IOPMrootDomain"));
        if (root == IO_OBJECT_NULL)
            return;
        _port = IONotificationPortCreate(kIOMasterPortDefault);
        IONotificationPortSetDispatchQueue(_port, machineEventsQueue());
        IOServiceAddInterestNotification(_port, root, kIOGeneralInterest, changed, this, &_lid);
        IOObjectRelease(root);
    }

    // On the queue of the events.
    void update()
    {
        const auto use = readUse();
        const auto idle = idleTime().value_or(nanoseconds(0));
        const auto next = idle < inUse ? inUse - idle : nanoseconds(lookAgain);
        constexpr std::uint64_t leeway = 1'000'000'000;
        dispatch_source_set_timer(_timer, dispatch_time(DISPATCH_TIME_NOW, next.count()), DISPATCH_TIME_FOREVER,
                                  leeway);
        const std::lock_guard lock(_mutex);
        // The moment comes out a little different each time.
        const bool isSame = use.isKnown == _told.isKnown && use.isPassive == _told.isPassive
            && use.unusedSince.has_value() == _told.unusedSince.has_value()
            && (!use.unusedSince || std::chrono::abs(*use.unusedSince - *_told.unusedSince) < std::chrono::seconds(2));
        if (isSame)
            return;
        _told = use;
        _telling.tell();
    }

    QueueTelling<> _telling;
    dispatch_source_t _timer;
    id _store = nil;
    IONotificationPortRef _port = nullptr;
    io_object_t _lid = IO_OBJECT_NULL;
    std::mutex _mutex; // of:
    ComputerUse _told;
};

} // namespace

FollowedCondition<ComputerUse> followComputerUse(std::shared_ptr<Queue> queue, std::function<void()> handler)
{
    return std::make_unique<MacComputerUse>(std::move(queue), std::move(handler));
}

} // namespace platform
