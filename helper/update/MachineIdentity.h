#pragma once

#include "platform/Data.h"

namespace helper {

// What tells this machine from others, in some form; empty when the system does not say. It leaves the machine in no
// form.
platform::Data machineIdentity();

} // namespace helper
