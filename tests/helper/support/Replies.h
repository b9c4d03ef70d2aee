#pragma once

#include "messaging/ZRKXPCClient.h"
#include "platform/Error.h"
#include "platform/PropertyList.h"

#include <cstdint>

// What a reply of the helper says, read as the application reads it. A case fails when it says something else.
platform::PropertyList resultIn(const platform::ServiceReply& reply);
platform::Dictionary recordIn(const platform::ServiceReply& reply);
platform::Error errorIn(const platform::ServiceReply& reply);
void checkError(const platform::ServiceReply& reply, const char* domain, std::int64_t code);

// The 32 bytes that stand for this process.
platform::Data ownToken();
platform::Data binaryData(const platform::PropertyList& value);
