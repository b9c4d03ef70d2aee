#include "messaging/BRVHelperMessager.h"

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
