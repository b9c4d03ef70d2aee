#include "platform/Error.h"
#include "platform/Format.h"
#include "platform/Localization.h"

#include <cstring>
#include <limits>

namespace platform {

std::string localizedDescription(const Error& error)
{
    if (const std::string* text = error.userInfo.stringForKey(LocalizedDescriptionKey))
        return *text;
    const bool isSystemCode = error.code >= 0 && error.code <= std::numeric_limits<int>::max();
    if (error.domain == POSIXErrorDomain && isSystemCode) {
        char buffer[256];
        return ::strerror_r(static_cast<int>(error.code), buffer, sizeof buffer);
    }
    const std::string format = localizedString("The operation couldn’t be completed. (%@ error %ld.)");
    return formatString(format, {error.domain, error.code}).value_or(error.domain);
}

} // namespace platform
