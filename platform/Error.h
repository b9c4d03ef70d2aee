#pragma once

#include "platform/PropertyList.h"

#include <cstdint>
#include <expected>
#include <memory>
#include <string>

namespace platform {

inline constexpr const char* POSIXErrorDomain = "NSPOSIXErrorDomain";
inline constexpr const char* CocoaErrorDomain = "NSCocoaErrorDomain";
inline constexpr const char* LocalizedDescriptionKey = "NSLocalizedDescription";
inline constexpr const char* UnderlyingErrorKey = "NSUnderlyingError";
inline constexpr const char* MultipleUnderlyingErrorsKey = "NSMultipleUnderlyingErrorsKey";

// One failure. The code means something only together with the domain. The errors under the two keys above are held
// beside the other user info, because they are no property-list values.
struct Error {
    std::string domain;
    std::int64_t code = 0;
    Dictionary userInfo;
    std::shared_ptr<const Error> underlying;
    std::vector<std::shared_ptr<const Error>> multipleUnderlying = {}; // none of them null

    bool operator==(const Error& other) const;
};

template <class T>
using Result = std::expected<T, Error>;

// The platform's own words for an error: the text under LocalizedDescriptionKey if there is one, the system's
// text for a POSIX code, otherwise a sentence that names the domain and the code.
std::string localizedDescription(const Error& error);

} // namespace platform
