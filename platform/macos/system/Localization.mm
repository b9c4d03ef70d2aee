#include "platform/Localization.h"

#include "platform/macos/interface/DecimalDigits.h"
#include "platform/macos/system/Foundation.h"

namespace platform {

std::string localizedString(std::string_view key)
{
    @autoreleasepool {
        return foundation::string([NSBundle.mainBundle localizedStringForKey:foundation::string(key)
                                                                       value:@""
                                                                       table:nil]);
    }
}

std::string localizedStringForStatusCode(std::int64_t code)
{
    @autoreleasepool {
        return foundation::string([NSHTTPURLResponse localizedStringForStatusCode:code]);
    }
}

bool isDecimalDigit(char32_t character)
{
    return [NSCharacterSet.decimalDigitCharacterSet longCharacterIsMember:character];
}

int decimalDigitValue(char32_t character)
{
    return macos::decimalDigitValue(character, isDecimalDigit);
}

} // namespace platform
