#include "helper/RequestReader.h"

#include "platform/Authorization.h"
#include "platform/PropertyListCoding.h"
#include "protocol/ErrorCodes.h"

#include <algorithm>
#include <memory>
#include <utility>

namespace helper {

using platform::Data;
using platform::Result;
using platform::ServiceDictionary;

namespace {

constexpr std::size_t externalFormSize = std::tuple_size_v<platform::Authorization::ExternalForm>;

platform::Error damaged(platform::Dictionary userInfo)
{
    return {ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, std::move(userInfo), nullptr};
}

platform::Error notAnExternalForm()
{
    return {ZRKAuthorizationErrorDomain,
            ZRKAuthorizationErrorCreateFromExternalForm,
            {{"status", platform::Authorization::InternalizeNotAllowed}},
            nullptr};
}

} // namespace

platform::Error RequestReader::deserializeError(std::int64_t message)
{
    return damaged({{"message", message}});
}

const std::vector<platform::ServiceKey>& RequestReader::form()
{
    static const std::vector<platform::ServiceKey> keys = {
        {"message", 0}, {"auth", externalFormSize}, {"payload", maximumPayloadSize}};
    return keys;
}

Result<Request> RequestReader::requestForMessage(ServiceDictionary message, const std::vector<std::string>& tooLong)
{
    Request request;
    auto number = message.find("message");
    if (number == message.end() || !std::holds_alternative<std::int64_t>(number->second))
        return std::unexpected(damaged({}));
    request.message = std::get<std::int64_t>(number->second);

    if (std::ranges::find(tooLong, "auth") != tooLong.end())
        return std::unexpected(notAnExternalForm());
    if (std::ranges::find(tooLong, "payload") != tooLong.end())
        return std::unexpected(deserializeError(request.message));
    if (auto auth = message.find("auth"); auth != message.end()) {
        auto* bytes = std::get_if<Data>(&auth->second);
        if (!bytes || bytes->size() != externalFormSize)
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
    // Applications send this format alone; the readers of the others are spared what anybody may send.
    auto value = platform::binaryPropertyListWithData(*request.payload, maximumValues);
    if (!value) {
        auto error = deserializeError(request.message);
        error.underlying = std::make_shared<const platform::Error>(std::move(value.error()));
        return std::unexpected(std::move(error));
    }
    return Payload(std::move(*value));
}

} // namespace helper
