#include "platform/macos/system/Foundation.h"

namespace platform {

std::string localizedDescription(const Error& error)
{
    @autoreleasepool {
        return foundation::string(foundation::error(error).localizedDescription);
    }
}

} // namespace platform
