#pragma once

#include "platform/PropertyList.h"
#include "scheduling/Instant.h"

#include <optional>

namespace scheduling {

// Between instants and the dates of property lists. nullopt for what is no date, or one that no clock shows.
platform::Date dateOf(Instant instant);
std::optional<Instant> instantOf(const platform::PropertyList* date);

// Leaves the dictionary alone when there is no instant.
void setDate(platform::Dictionary& dictionary, const char* key, std::optional<Instant> instant);

} // namespace scheduling
