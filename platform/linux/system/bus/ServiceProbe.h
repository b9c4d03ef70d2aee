#pragma once

#include "platform/ServiceConnection.h"

#include <chrono>
#include <expected>
#include <memory>
#include <string>
#include <sys/types.h>

namespace platform {

// A client that looks whether a named endpoint is served, and never has it started for that. It waits for nothing
// longer than it is told to.
class ServiceProbe {
public:
    // Opens the system bus. Fails with a sentence.
    static std::expected<std::unique_ptr<ServiceProbe>, std::string> open(std::chrono::milliseconds limit);
    virtual ~ServiceProbe() = default;

    // The process that has the name; 0 when there is none, or no bus any more.
    virtual pid_t owner(const std::string& serviceName) = 0;
    // Whether the endpoint answers this message with anything but a refusal.
    virtual bool answers(const std::string& serviceName, const ServiceDictionary& message) = 0;
};

} // namespace platform
