#pragma once

#include "platform/PropertyList.h"

namespace helper {

// Puts a store of rights' definitions aside that is damaged, where the product keeps one of its own.
void repairRightsDatabase();

// The definition of a right that is granted by another rule of the system's, as the database of rights takes it.
platform::Dictionary rightGrantedByRule(const char* rule);

} // namespace helper
