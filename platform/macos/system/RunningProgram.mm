#include "platform/RunningProgram.h"

#include "platform/macos/system/Foundation.h"

namespace platform {

std::string executablePath()
{
    @autoreleasepool {
        return foundation::string(NSBundle.mainBundle.executablePath);
    }
}

void useLanguage(const std::string& language)
{
    @autoreleasepool {
        NSUserDefaults* const defaults = NSUserDefaults.standardUserDefaults;
        NSMutableDictionary* const arguments = [[defaults volatileDomainForName:NSArgumentDomain] mutableCopy];
        arguments[@"AppleLanguages"] = @[ foundation::string(language) ];
        [defaults setVolatileDomain:arguments forName:NSArgumentDomain];
    }
}

} // namespace platform
