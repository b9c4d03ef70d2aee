#pragma once

#include "platform/ServiceConnection.h"

#include <optional>
#include <string>
#include <systemd/sd-bus.h>

namespace platform {

// How a named endpoint and its dictionaries look on the bus.
inline constexpr const char* ServiceMethod = "Send";
inline constexpr const char* ServiceSignature = "a{sv}";

// The object path that goes with a name: "a.b" is at "/a/b".
std::string servicePath(const std::string& serviceName);

// Appends the dictionary as a{sv}, integers as `x` and bytes as `ay`. A negative errno value on failure.
int appendServiceDictionary(sd_bus_message* message, const ServiceDictionary& dictionary);

// Reads an a{sv}; entries of other types are left out, of a key given twice the last counts. Nothing when the body is
// something else or damaged.
std::optional<ServiceDictionary> readServiceDictionary(sd_bus_message* message);

} // namespace platform
