#include "helper/SystemError.h"

#include <cerrno>
#include <system_error>

namespace helper {

platform::Error systemError(int code, const std::string& sentence)
{
    // The system has no words of its own for what a package may not hold.
    auto text = code == EBADMSG ? sentence : sentence + " " + std::generic_category().message(code) + ".";
    return {platform::POSIXErrorDomain, code, {{platform::LocalizedDescriptionKey, text}}, nullptr};
}

} // namespace helper
