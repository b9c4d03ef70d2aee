#pragma once

#include "platform/ServiceConnection.h"
#include "platform/ServiceListener.h"

#include <cstddef>
#include <optional>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace platform {

// How a named endpoint and its dictionaries look on the bus.
inline constexpr const char* ServiceMethod = "Send";
inline constexpr const char* ServiceSignature = "a{sv}";

// What a message may weigh, header and body, before the bus ends the connection of its sender; a little less.
inline constexpr std::size_t MaximumServiceMessageSize = (std::size_t(32) << 20) - 4096;

// The object path that goes with a name: "a.b" is at "/a/b".
std::string servicePath(const std::string& serviceName);

// What the dictionary weighs on the bus, at most.
std::size_t serviceDictionarySize(const ServiceDictionary& dictionary);

// Appends the dictionary as a{sv}, integers as `x` and bytes as `ay`. A negative errno value on failure.
int appendServiceDictionary(sd_bus_message* message, const ServiceDictionary& dictionary);

struct ServiceReading {
    ServiceDictionary dictionary;
    std::vector<std::string> tooLong; // keys of the form whose bytes are more than they may be; never copied
};

// Reads an a{sv}; entries of other types are left out, of a key given twice the last counts. nullopt when the body is
// something else or damaged. With a form only its keys are read, and a body of more than some hundred values is
// refused, so that no message takes long.
std::optional<ServiceReading> readServiceMessage(sd_bus_message* message, const std::vector<ServiceKey>& form);
std::optional<ServiceDictionary> readServiceDictionary(sd_bus_message* message);

} // namespace platform
