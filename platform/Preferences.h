#pragma once

#include "platform/PropertyList.h"

#include <optional>
#include <string>

namespace platform {

// A value of another program's preferences, for any user and the current host. nullopt when it is absent or the
// preferences cannot be read.
std::optional<PropertyList> preferenceValue(const std::string& key, const std::string& domain);

// The same as a boolean; nullopt also for a value of another type. An integer is of another type, 1 and 0 as well: what
// its writer meant by it is not ours to guess.
inline std::optional<bool> booleanPreference(const std::string& key, const std::string& domain)
{
    const auto value = preferenceValue(key, domain);
    const bool isBoolean = value && value->type() == PropertyList::Type::Boolean;
    return isBoolean ? std::optional(value->boolValue()) : std::nullopt;
}

} // namespace platform
