#pragma once

#include "platform/ServiceConnection.h"

#include <xpc/xpc.h>

namespace platform {

// How the dictionaries of a named endpoint look in messages.
xpc_object_t xpcDictionary(const ServiceDictionary& dictionary);
void setEntries(xpc_object_t message, const ServiceDictionary& dictionary);

// Values of other types are left out.
ServiceDictionary serviceDictionary(xpc_object_t dictionary);

} // namespace platform
