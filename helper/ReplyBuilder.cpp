#include "helper/ReplyBuilder.h"

#include "messaging/ZRKError.h"
#include "platform/ErrorArchive.h"
#include "platform/Format.h"
#include "platform/PropertyListCoding.h"
#include "protocol/ErrorCodes.h"

#include <utility>

namespace helper {

using platform::ServiceDictionary;

ServiceDictionary ReplyBuilder::replyWithResult(std::int64_t message, const platform::PropertyList& result)
{
    auto bytes = platform::binaryPropertyList(result);
    if (!bytes)
        return replyWithError(ZRKError::errorWithDomain(
            ZRKMessagerErrorDomain, ZRKMessagerErrorSerializeReply,
            {{"message", message}, {"reply", platform::description(result)}}, std::move(bytes.error())));
    return {{"payload", std::move(*bytes)}};
}

ServiceDictionary ReplyBuilder::replyWithError(const platform::Error& error)
{
    return {{"error", platform::archivedError(error)}};
}

} // namespace helper
