#pragma once

#include "platform/Error.h"
#include "platform/ServiceConnection.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace helper {

// A request as it arrived, its form checked and nothing else: whether its sender may make it is not known yet.
struct Request {
    std::int64_t message = 0;
    std::optional<platform::Data> auth;    // exactly 32 bytes
    std::optional<platform::Data> payload; // not parsed
};

// Takes requests apart. Everything in them may be forged.
class RequestReader {
public:
    using Payload = std::optional<platform::PropertyList>;

    static constexpr std::size_t maximumPayloadSize = std::size_t(4) << 20;

    // Messager error 3 for a missing number or an odd payload, authorization error 3 for an authorization that is not
    // of 32 bytes.
    static platform::Result<Request> requestForMessage(platform::ServiceDictionary message);

    // The payload as a value, parsed only once the sender may make the request. Messager error 3 when it is damaged.
    static platform::Result<Payload> payloadOfRequest(const Request& request);

    // The messager error 3 of the message.
    static platform::Error deserializeError(std::int64_t message);
};

} // namespace helper
