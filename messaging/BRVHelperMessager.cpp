#include "messaging/BRVHelperMessager.h"

#include "messaging/ZRKError.h"
#include "protocol/ErrorCodes.h"
#include "protocol/SnapshotList.h"

#include <utility>

const std::shared_ptr<BRVHelperMessager>& BRVHelperMessager::sharedMessager()
{
    // Never destroyed: replies may still arrive while the process ends.
    static const auto& shared = *new std::shared_ptr<BRVHelperMessager>(create());
    return shared;
}

std::shared_ptr<BRVHelperMessager> BRVHelperMessager::create()
{
    const std::shared_ptr<BRVHelperMessager> messager(new BRVHelperMessager);
    messager->_client = std::make_unique<ZRKMessagerClient>(BRVSchedulerServiceName, messager);
    return messager;
}

platform::Result<void> BRVHelperMessager::sendMessage(std::int64_t message, const Payload& payload)
{
    return _client->sendMessage(message, payload);
}

void BRVHelperMessager::sendMessage(std::int64_t message, const Payload& payload,
                                    std::shared_ptr<platform::Queue> replyQueue, ReplyHandler handler)
{
    _client->sendMessage(message, payload, std::move(replyQueue), std::move(handler));
}

BRVHelperMessager::Reply BRVHelperMessager::sendSynchronousMessage(std::int64_t message, const Payload& payload)
{
    return _client->sendSynchronousMessage(message, payload);
}

void BRVHelperMessager::sendMessageForDictionary(std::int64_t message, const Payload& payload,
                                                 std::shared_ptr<platform::Queue> replyQueue, DictionaryHandler handler)
{
    _client->sendMessage(message, payload, std::move(replyQueue), [message, handler = std::move(handler)](Reply reply) {
        if (!reply)
            handler(std::unexpected(std::move(reply.error())));
        else if (auto* const dictionary = reply->dictionary())
            handler(std::move(*dictionary));
        else
            handler(std::unexpected(ZRKError::errorWithDomain(ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeReply,
                                                              {{"message", message}})));
    });
}

void BRVHelperMessager::getStatus(std::shared_ptr<platform::Queue> replyQueue, DictionaryHandler handler)
{
    sendMessageForDictionary(BRVMessageGetStatus, {}, std::move(replyQueue), std::move(handler));
}

void BRVHelperMessager::startBackup(std::shared_ptr<platform::Queue> replyQueue, DictionaryHandler handler)
{
    sendMessageForDictionary(BRVMessageStartBackup, {}, std::move(replyQueue), std::move(handler));
}

void BRVHelperMessager::getBackupProgram(std::shared_ptr<platform::Queue> replyQueue, DictionaryHandler handler)
{
    sendMessageForDictionary(BRVMessageGetBackupProgram, {}, std::move(replyQueue), std::move(handler));
}

void BRVHelperMessager::setBackupProgram(const platform::Dictionary& choice,
                                         std::shared_ptr<platform::Queue> replyQueue, DictionaryHandler handler)
{
    sendMessageForDictionary(BRVMessageSetBackupProgram, choice, std::move(replyQueue), std::move(handler));
}

void BRVHelperMessager::listSnapshots(const std::string& volume, std::shared_ptr<platform::Queue> replyQueue,
                                      DictionaryHandler handler)
{
    sendMessageForDictionary(BRVMessageListSnapshots, platform::Dictionary{{SnapshotListKey::Volume, volume}},
                             std::move(replyQueue), std::move(handler));
}

void BRVHelperMessager::cancel()
{
    _client->cancel();
}

std::optional<std::vector<std::string>> BRVHelperMessager::authorizationRightsForMessage(const ZRKMessagerClient&,
                                                                                         std::int64_t message)
{
    return BRVAuthorizationRightsForMessage(message);
}

bool BRVHelperMessager::requiresAuthorizationForMessage(std::int64_t message) const
{
    const auto rights = BRVAuthorizationRightsForMessage(message);
    return rights && !rights->empty();
}

bool helperDoesNotServeMessage(const platform::Error& error)
{
    return error.domain == ZRKMessagerErrorDomain && error.code == ZRKMessagerErrorDeserializeMessage;
}
