#pragma once

#include "platform/Error.h"
#include "platform/ServiceConnection.h"

#include <cstdint>

namespace helper {

// The two replies to a request. Each holds exactly one of "payload" and "error".
class ReplyBuilder {
public:
    // An error reply of messager error 4 when the result cannot be written.
    static platform::ServiceDictionary replyWithResult(std::int64_t message, const platform::PropertyList& result);
    static platform::ServiceDictionary replyWithError(const platform::Error& error);
};

} // namespace helper
