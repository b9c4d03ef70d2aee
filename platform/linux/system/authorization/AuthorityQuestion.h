#pragma once

#include "platform/Authorization.h"

#include <cstdint>
#include <string>
#include <systemd/sd-bus.h>

// The one question that polkit is asked, whatever connection carries it: may the peer that has this unique name do what
// the right guards?
namespace platform::AuthorityQuestion {

inline constexpr const char* Name = "org.freedesktop.PolicyKit1";
inline constexpr const char* Path = "/org/freedesktop/PolicyKit1/Authority";
inline constexpr const char* Interface = "org.freedesktop.PolicyKit1.Authority";

// A question that shows no dialog is answered at once or not at all; microseconds.
inline constexpr std::uint64_t SilentLimit = 25'000'000;

struct Verdict {
    Authorization::Status status = Authorization::Internal;
    std::string grant; // the id of the grant that is kept, if any
};

// A negative errno value on failure.
int compose(sd_bus* bus, sd_bus_message** message, const std::string& subject, const std::string& right,
            bool allowsInteraction);

// The answer, or the name of the D-Bus error when the reply is null.
Verdict read(sd_bus_message* reply, const char* error, bool allowsInteraction);

} // namespace platform::AuthorityQuestion
