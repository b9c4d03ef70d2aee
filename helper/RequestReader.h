#pragma once

#include "platform/Error.h"
#include "platform/ServiceListener.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace helper {

// A request as it arrived, its form checked and nothing else: whether its sender may make it is not known yet.
struct Request {
    std::int64_t message = 0;
    std::optional<platform::Data> auth;    // exactly 32 bytes
    std::optional<platform::Data> payload; // not parsed
};

// Takes requests apart. Everything in them may be forged. The errors are not logged.
class RequestReader {
public:
    using Payload = std::optional<platform::PropertyList>;

    static constexpr std::size_t maximumPayloadSize = std::size_t(4) << 20;
    // The longest record that is taken has ten thousand entries of nine values.
    static constexpr std::size_t maximumValues = 120'000;

    // What is read of a message: the rest is passed over, unread.
    static const std::vector<platform::ServiceKey>& form();

    // Messager error 3 for a missing number or an odd payload, authorization error 3 for an authorization that is not
    // of 32 bytes. `tooLong` names the keys of the form that were left out for their length.
    static platform::Result<Request> requestForMessage(platform::ServiceDictionary message,
                                                       const std::vector<std::string>& tooLong = {});

    // The payload as a value, parsed only once the sender may make the request; binary format alone. Messager error 3
    // when it is damaged or holds too many values.
    static platform::Result<Payload> payloadOfRequest(const Request& request);

    // The messager error 3 of the message.
    static platform::Error deserializeError(std::int64_t message);
};

} // namespace helper
