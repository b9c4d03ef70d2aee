#pragma once

#include <string>
#include <sys/types.h>

// The process that owns a name on the system bus, or -1.
pid_t ownerOfBusName(const std::string& name);
