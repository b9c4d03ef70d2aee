#include "helper/RequestReader.h"

#include "messaging/ZRKError.h"
#include "platform/Authorization.h"
#include "platform/PropertyListCoding.h"
#include "protocol/ErrorCodes.h"

#include <utility>

namespace helper {

using platform::Data;
using platform::Result;
using platform::ServiceDictionary;

namespace {

platform::Error damaged(platform::Dictionary userInfo)
{
    return ZRKError::errorWithDomain(ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, std::move(userInfo));
}

platform::Error notAnExternalForm()
{
    return ZRKError::errorWithDomain(ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorCreateFromExternalForm,
                                     {{"status", platform::Authorization::InternalizeNotAllowed}});
}

} // namespace

platform::Error RequestReader::deserializeError(std::int64_t message)
{
    return damaged({{"message", message}});
}

Result<Request> RequestReader::requestForMessage(ServiceDictionary message)
{
    Request request;
    auto number = message.find("message");
    if (number == message.end() || !std::holds_alternative<std::int64_t>(number->second))
        return std::unexpected(damaged({}));
    request.message = std::get<std::int64_t>(number->second);

    if (auto auth = message.find("auth"); auth != message.end()) {
        auto* bytes = std::get_if<Data>(&auth->second);
        if (!bytes || bytes->size() != std::tuple_size_v<platform::Authorization::ExternalForm>)
            return std::unexpected(notAnExternalForm());
        request.auth = std::move(*bytes);
    }
    if (auto payload = message.find("payload"); payload != message.end()) {
        auto* bytes = std::get_if<Data>(&payload->second);
        if (!bytes || bytes->size() > maximumPayloadSize)
            return std::unexpected(deserializeError(request.message));
        request.payload = std::move(*bytes);
    }
    return request;
}

Result<RequestReader::Payload> RequestReader::payloadOfRequest(const Request& request)
{
    if (!request.payload)
        return Payload();
    auto value = platform::binaryPropertyListWithData(*request.payload);
    if (!value)
        return std::unexpected(ZRKError::errorWithDomain(ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage,
                                                         {{"message", request.message}}, std::move(value.error())));
    return Payload(std::move(*value));
}

} // namespace helper
