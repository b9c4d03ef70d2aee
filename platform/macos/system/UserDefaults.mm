#include "platform/UserDefaults.h"

#include "platform/macos/system/Foundation.h"

namespace platform {

namespace {

NSString* const domain = @"com.zerkolin.brevane.application";
bool isForgotten = false; // for good

} // namespace

std::optional<PropertyList> userDefault(const std::string& key)
{
    @autoreleasepool {
        const id value = [NSUserDefaults.standardUserDefaults objectForKey:foundation::string(key)];
        return value ? foundation::propertyList(value) : std::nullopt;
    }
}

bool userDefaultBool(const std::string& key)
{
    @autoreleasepool {
        return [NSUserDefaults.standardUserDefaults boolForKey:foundation::string(key)];
    }
}

bool setUserDefault(const std::string& key, const PropertyList& value)
{
    @autoreleasepool {
        const id object = isForgotten ? nil : foundation::object(value);
        if (object)
            [NSUserDefaults.standardUserDefaults setObject:object forKey:foundation::string(key)];
        return object != nil;
    }
}

bool removeUserDefaults()
{
    @autoreleasepool {
        NSUserDefaults* const defaults = NSUserDefaults.standardUserDefaults;
        [defaults removePersistentDomainForName:domain];
        isForgotten = [defaults persistentDomainForName:domain].count == 0;
        return isForgotten;
    }
}

} // namespace platform
