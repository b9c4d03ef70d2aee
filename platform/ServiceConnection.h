#pragma once

#include "platform/Data.h"
#include "platform/Queue.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <variant>

namespace platform {

// What travels in both directions: string keys to 64-bit integers or bytes.
using ServiceDictionary = std::map<std::string, std::variant<std::int64_t, Data>, std::less<>>;

enum class ServiceError {
    Interrupted, // the peer went away while a reply was pending; the connection reaches it again when it is back
    Invalid,     // the endpoint cannot be used: unknown, refused, or the transport is gone
    Refused,     // the peer, or the transport, would not have this one request; the connection is as good as before
    TooLarge,    // the transport carries no message of this size; nothing was sent
};

using ServiceReply = std::expected<ServiceDictionary, ServiceError>;

// A connection to a named, privileged endpoint. Nothing is exchanged before `resume`. All sends may be called from
// any thread, several at once, and have no time limit; each reply handler runs exactly once.
class ServiceConnection {
public:
    using EventHandler = std::function<void(ServiceError)>;
    using ReplyHandler = std::function<void(ServiceReply)>;

    enum Flags : unsigned { Privileged = 2 }; // the endpoint is a system-wide daemon

    // Events and nothing else are delivered on `target`. Interrupted is told once for each loss of the peer,
    // Invalid once in the connection's life.
    static std::shared_ptr<ServiceConnection> create(const std::string& serviceName, std::shared_ptr<Queue> target,
                                                     unsigned flags);
    virtual ~ServiceConnection() = default;

    virtual void setEventHandler(EventHandler handler) = 0; // before resume
    virtual void resume() = 0;
    virtual void send(const ServiceDictionary& message) = 0; // one way
    virtual void send(const ServiceDictionary& message, std::shared_ptr<Queue> replyQueue, ReplyHandler handler) = 0;
    virtual ServiceReply sendSynchronously(const ServiceDictionary& message) = 0;
    // Pending and later sends are answered with Invalid, and the handler hears Invalid.
    virtual void cancel() = 0;
    // Whether it has become invalid, be the event delivered or not. Any thread.
    virtual bool isInvalid() const = 0;
};

} // namespace platform
