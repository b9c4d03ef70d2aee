#include "messaging/ZRKMessagerClient.h"

#include "messaging/ZRKAuthorizationManager.h"
#include "messaging/ZRKError.h"
#include "platform/ErrorArchive.h"
#include "platform/Format.h"
#include "platform/PropertyListCoding.h"
#include "protocol/ErrorCodes.h"
#include "version/ZRKSystemVersionManager.h"

#include <cerrno>
#include <utility>

namespace {

platform::Error wrappingError(ZRKMessagerErrorCode code, platform::Dictionary userInfo, platform::Error underlying)
{
    return ZRKError::errorWithDomain(ZRKMessagerErrorDomain, code, std::move(userInfo), std::move(underlying));
}

// Null when the key is absent or holds a number.
const platform::Data* dataForKey(const platform::ServiceDictionary& dictionary, std::string_view key)
{
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : std::get_if<platform::Data>(&found->second);
}

} // namespace

ZRKMessagerClient::ZRKMessagerClient(std::string serviceName, std::weak_ptr<ZRKMessagerClientDelegate> delegate)
    : _XPCClient(std::make_unique<ZRKXPCClient>(std::move(serviceName))),
      _delegate(std::move(delegate))
{
}

ZRKMessagerClient::~ZRKMessagerClient() = default;

const std::string& ZRKMessagerClient::serviceName() const
{
    return _XPCClient->serviceName();
}

platform::Result<void> ZRKMessagerClient::sendMessage(std::int64_t message, const Payload& payload)
{
    const auto request = XPCMessageForMessage(message, payload);
    if (!request)
        return std::unexpected(request.error());
    _XPCClient->sendXPCMessage(*request);
    return {};
}

void ZRKMessagerClient::sendMessage(std::int64_t message, const Payload& payload,
                                    std::shared_ptr<platform::Queue> replyQueue, ReplyHandler handler)
{
    const auto request = XPCMessageForMessage(message, payload);
    if (!request) {
        handler(std::unexpected(request.error()));
        return;
    }
    // The reply may come after the client is gone.
    _XPCClient->sendXPCMessage(*request, std::move(replyQueue),
                               [service = serviceName(), message, handler = std::move(handler)](auto reply) {
                                   handler(_replyForMessage(service, message, reply));
                               });
}

ZRKMessagerClient::Reply ZRKMessagerClient::sendSynchronousMessage(std::int64_t message, const Payload& payload)
{
    const auto request = XPCMessageForMessage(message, payload);
    if (!request)
        return std::unexpected(request.error());
    return replyForMessage(message, _XPCClient->sendSynchronousXPCMessage(*request));
}

void ZRKMessagerClient::cancel()
{
    _XPCClient->cancel();
}

platform::Result<platform::ServiceDictionary> ZRKMessagerClient::XPCMessageForMessage(std::int64_t message,
                                                                                      const Payload& payload)
{
    platform::ServiceDictionary request{{"message", message}};
    if (payload) {
        auto bytes = platform::binaryPropertyList(*payload);
        if (!bytes)
            return std::unexpected(wrappingError(ZRKMessagerErrorSerializeMessage,
                                                 {{"message", message}, {"payload", platform::description(*payload)}},
                                                 std::move(bytes.error())));
        request["payload"] = std::move(*bytes);
    }
    const auto delegate = _delegate.lock();
    const auto rights = delegate ? delegate->authorizationRightsForMessage(*this, message) : std::nullopt;
    if (rights && !rights->empty()) {
        auto form = ZRKAuthorizationManager::sharedManager().authorizationExternalDataWithRights(*rights);
        if (!form)
            return std::unexpected(
                wrappingError(ZRKMessagerErrorAuthorize, {{"message", message}}, std::move(form.error())));
        request["auth"] = std::move(*form);
    }
    return request;
}

ZRKMessagerClient::Reply ZRKMessagerClient::replyForMessage(std::int64_t message,
                                                            const platform::ServiceReply& reply) const
{
    return _replyForMessage(serviceName(), message, reply);
}

ZRKMessagerClient::Reply ZRKMessagerClient::_replyForMessage(const std::string& service, std::int64_t message,
                                                             const platform::ServiceReply& reply)
{
    if (!reply && reply.error() == platform::ServiceError::TooLarge)
        return std::unexpected(wrappingError(ZRKMessagerErrorSerializeMessage,
                                             {{"message", message}, {"payload", "larger than 32 MB"}},
                                             {platform::POSIXErrorDomain, EMSGSIZE, {}, nullptr}));
    if (!reply) {
        const auto code = reply.error() == platform::ServiceError::Interrupted ? ZRKMessagerErrorServiceDisappeared
                                                                               : ZRKMessagerErrorServiceUnavailable;
        return std::unexpected(
            ZRKError::errorWithDomain(ZRKMessagerErrorDomain, code, {{"message", message}, {"service", service}}));
    }
    if (auto error = errorForMessage(message, *reply))
        return std::unexpected(std::move(*error));
    return payloadForMessage(message, *reply);
}

std::optional<platform::Error> ZRKMessagerClient::errorForMessage(std::int64_t message,
                                                                  const platform::ServiceDictionary& reply)
{
    const auto* bytes = dataForKey(reply, "error");
    if (!bytes)
        return std::nullopt;
    const bool secure = ZRKSystemVersionManager::sharedManager().runningAtLeast(3);
    auto error = platform::unarchivedError(*bytes, secure);
    if (error)
        return std::move(*error);
    if (!secure)
        return std::nullopt;
    return wrappingError(ZRKMessagerErrorUnarchiveReplyError, {{"message", message}}, std::move(error.error()));
}

ZRKMessagerClient::Reply ZRKMessagerClient::payloadForMessage(std::int64_t message,
                                                              const platform::ServiceDictionary& reply)
{
    const auto* bytes = dataForKey(reply, "payload");
    if (!bytes)
        return platform::Dictionary();
    auto payload = platform::propertyListWithData(*bytes);
    if (!payload)
        return std::unexpected(
            wrappingError(ZRKMessagerErrorDeserializeReply, {{"message", message}}, std::move(payload.error())));
    return payload;
}
