#pragma once

#include "messaging/ZRKMessagerClient.h"
#include "protocol/Messages.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// The application's one door to the scheduler helper.
class BRVHelperMessager : public ZRKMessagerClientDelegate, public std::enable_shared_from_this<BRVHelperMessager> {
public:
    using Payload = ZRKMessagerClient::Payload;
    using Reply = ZRKMessagerClient::Reply;
    using ReplyHandler = ZRKMessagerClient::ReplyHandler;

    static const std::shared_ptr<BRVHelperMessager>& sharedMessager();
    static std::shared_ptr<BRVHelperMessager> create();

    platform::Result<void> sendMessage(std::int64_t message, const Payload& payload = {});
    void sendMessage(std::int64_t message, const Payload& payload, std::shared_ptr<platform::Queue> replyQueue,
                     ReplyHandler handler);
    Reply sendSynchronousMessage(std::int64_t message, const Payload& payload = {});
    void cancel();

    std::optional<std::vector<std::string>> authorizationRightsForMessage(const ZRKMessagerClient& client,
                                                                          std::int64_t message) override;
    bool requiresAuthorizationForMessage(std::int64_t message) const;

private:
    BRVHelperMessager() = default;
    std::unique_ptr<ZRKMessagerClient> _client;
};
