#pragma once

#include "platform/ServiceConnection.h"

#include <memory>
#include <string>

// The one connection to a privileged service: made on first use, forgotten when the system calls it invalid, kept when
// it is interrupted. Any thread.
class ZRKXPCClient {
public:
    using Connection = platform::ServiceConnection;

    explicit ZRKXPCClient(std::string serviceName);
    ~ZRKXPCClient();
    ZRKXPCClient(const ZRKXPCClient&) = delete;
    ZRKXPCClient& operator=(const ZRKXPCClient&) = delete;

    const std::string& serviceName() const;
    std::shared_ptr<Connection> connection();

    void sendXPCMessage(const platform::ServiceDictionary& message);
    void sendXPCMessage(const platform::ServiceDictionary& message, std::shared_ptr<platform::Queue> replyQueue,
                        Connection::ReplyHandler handler);
    platform::ServiceReply sendSynchronousXPCMessage(const platform::ServiceDictionary& message);

    // Cancels and forgets the connection; the next use makes a new one.
    void cancel();

private:
    struct State;
    std::shared_ptr<State> _state; // the connection's event handler holds it weakly
};
