#include "platform/linux/system/errors/CodingError.h"

#include "platform/Localization.h"

namespace platform {

namespace {

constexpr std::int64_t propertyListReadCorrupt = 3840;
constexpr std::int64_t propertyListWriteInvalid = 3852;

Error cocoaError(std::int64_t code, std::string_view detail)
{
    return {CocoaErrorDomain, code, {{LocalizedDescriptionKey, localizedString(detail)}}, nullptr};
}

} // namespace

Error corruptPropertyListError(std::string_view detail)
{
    return cocoaError(propertyListReadCorrupt, detail);
}

Error unwritablePropertyListError(std::string_view detail)
{
    return cocoaError(propertyListWriteInvalid, detail);
}

} // namespace platform
