#include "platform/Preferences.h"

#include "platform/AtomicFile.h"
#include "platform/PropertyListCoding.h"
#include "platform/SystemInformation.h"

namespace platform {

std::optional<PropertyList> preferenceValue(const std::string& key, const std::string& domain)
{
    auto bytes = readFile(systemPath("/Library/Preferences/" + domain + ".plist"));
    if (!bytes)
        return std::nullopt;
    auto preferences = propertyListWithData(*bytes);
    if (!preferences || !preferences->dictionary())
        return std::nullopt;
    const auto* value = preferences->dictionary()->find(key);
    return value ? std::optional(*value) : std::nullopt;
}

} // namespace platform
