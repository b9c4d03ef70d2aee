#include "platform/Preferences.h"

#include "platform/macos/system/Foundation.h"

namespace platform {

std::optional<PropertyList> preferenceValue(const std::string& key, const std::string& domain)
{
    @autoreleasepool {
        const id value = CFBridgingRelease(CFPreferencesCopyValue((__bridge CFStringRef)foundation::string(key),
                                                                  (__bridge CFStringRef)foundation::string(domain),
                                                                  kCFPreferencesAnyUser, kCFPreferencesCurrentHost));
        return value ? foundation::propertyList(value) : std::nullopt;
    }
}

} // namespace platform
