#pragma once

#include "messaging/ZRKXPCClient.h"
#include "platform/Error.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class ZRKMessagerClient;

class ZRKMessagerClientDelegate {
public:
    virtual ~ZRKMessagerClientDelegate() = default;
    // The rights of which one is needed for the message; empty when it travels without authorization. nullopt for a
    // number outside the protocol, which counts as empty.
    virtual std::optional<std::vector<std::string>> authorizationRightsForMessage(const ZRKMessagerClient& client,
                                                                                  std::int64_t message) = 0;
};

// Numbered requests with an optional property-list payload, over one service connection. Any thread.
class ZRKMessagerClient {
public:
    using Payload = std::optional<platform::PropertyList>;
    using Reply = platform::Result<platform::PropertyList>;
    using ReplyHandler = std::function<void(Reply)>;

    // The delegate is held weakly: it owns the client.
    ZRKMessagerClient(std::string serviceName, std::weak_ptr<ZRKMessagerClientDelegate> delegate);
    ~ZRKMessagerClient();

    const std::string& serviceName() const;

    // One way. Fails only when the request cannot be built.
    platform::Result<void> sendMessage(std::int64_t message, const Payload& payload);
    // The handler runs on the queue; when the request cannot be built, at once on the calling thread.
    void sendMessage(std::int64_t message, const Payload& payload, std::shared_ptr<platform::Queue> replyQueue,
                     ReplyHandler handler);
    // Blocks until the reply or a connection error.
    Reply sendSynchronousMessage(std::int64_t message, const Payload& payload);
    void cancel();

    platform::Result<platform::ServiceDictionary> XPCMessageForMessage(std::int64_t message, const Payload& payload);
    Reply replyForMessage(std::int64_t message, const platform::ServiceReply& reply) const;
    static Reply payloadForMessage(std::int64_t message, const platform::ServiceDictionary& reply);
    static std::optional<platform::Error> errorForMessage(std::int64_t message,
                                                          const platform::ServiceDictionary& reply);

private:
    static Reply _replyForMessage(const std::string& service, std::int64_t message,
                                  const platform::ServiceReply& reply);

    std::unique_ptr<ZRKXPCClient> _XPCClient;
    std::weak_ptr<ZRKMessagerClientDelegate> _delegate;
};
