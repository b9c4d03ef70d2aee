#include "platform/SleepInhibitor.h"

#include "platform/macos/system/Foundation.h"

#import <IOKit/pwr_mgt/IOPMLib.h>

namespace platform {

namespace {

class AssertionInhibitor final : public SleepInhibitor {
public:
    explicit AssertionInhibitor(IOPMAssertionID assertion) : _assertion(assertion) { }
    ~AssertionInhibitor() override { IOPMAssertionRelease(_assertion); }

private:
    IOPMAssertionID _assertion;
};

} // namespace

Result<std::unique_ptr<SleepInhibitor>> SleepInhibitor::create(const std::string& reason)
{
    @autoreleasepool {
        IOPMAssertionID assertion = kIOPMNullAssertionID;
        const IOReturn result =
            IOPMAssertionCreateWithName(kIOPMAssertionTypePreventUserIdleSystemSleep, kIOPMAssertionLevelOn,
                                        (__bridge CFStringRef)foundation::string(reason), &assertion);
        if (result != kIOReturnSuccess)
            return std::unexpected(Error{"NSMachErrorDomain", result, {}, nullptr});
        return std::make_unique<AssertionInhibitor>(assertion);
    }
}

} // namespace platform
