#include "messaging/ZRKXPCClient.h"

#include "diagnostics/log/ZRKLog.h"
#include "diagnostics/log/ZRKQueue.h"

#include <utility>

struct ZRKXPCClient::State : std::enable_shared_from_this<State> {
    explicit State(std::string name)
        : serviceName(std::move(name)),
          internalLock(ZRKQueueContextCreate(serviceName)) { }

    std::shared_ptr<Connection> makeConnection();
    void handleConnectionError(platform::ServiceError error, const std::weak_ptr<Connection>& failed);

    const std::string serviceName;
    const std::shared_ptr<platform::Queue> internalLock; // what runs on it never waits for the main work queue
    std::shared_ptr<Connection> connection;              // only on internalLock
};

std::shared_ptr<ZRKXPCClient::Connection> ZRKXPCClient::State::makeConnection()
{
    auto made = Connection::create(serviceName, ZRKQueueMain(), Connection::Privileged);
    made->setEventHandler([state = weak_from_this(), failed = std::weak_ptr(made)](platform::ServiceError error) {
        if (const auto self = state.lock())
            self->handleConnectionError(error, failed);
    });
    made->resume();
    return made;
}

void ZRKXPCClient::State::handleConnectionError(platform::ServiceError error, const std::weak_ptr<Connection>& failed)
{
    if (error == platform::ServiceError::Interrupted) {
        ZRKLogMessage(LogLevelDebug, "Connection interrupted with server.");
        return;
    }
    ZRKLogMessage(LogLevelError, "Connection became invalid with server.");
    // Another thread may have reconnected: forget only the failed connection, and let go of it after the lock.
    const auto invalid = failed.lock();
    internalLock->sync([&] {
        if (connection == invalid)
            connection = nullptr;
    });
}

ZRKXPCClient::ZRKXPCClient(std::string serviceName) : _state(std::make_shared<State>(std::move(serviceName))) { }

ZRKXPCClient::~ZRKXPCClient() = default;

const std::string& ZRKXPCClient::serviceName() const
{
    return _state->serviceName;
}

std::shared_ptr<ZRKXPCClient::Connection> ZRKXPCClient::connection()
{
    std::shared_ptr<Connection> current;
    _state->internalLock->sync([&] {
        // The event that says so may still be on its way.
        if (!_state->connection || _state->connection->isInvalid())
            _state->connection = _state->makeConnection();
        current = _state->connection;
    });
    return current;
}

void ZRKXPCClient::sendXPCMessage(const platform::ServiceDictionary& message)
{
    connection()->send(message);
}

void ZRKXPCClient::sendXPCMessage(const platform::ServiceDictionary& message,
                                  std::shared_ptr<platform::Queue> replyQueue, Connection::ReplyHandler handler)
{
    connection()->send(message, std::move(replyQueue), std::move(handler));
}

platform::ServiceReply ZRKXPCClient::sendSynchronousXPCMessage(const platform::ServiceDictionary& message)
{
    return connection()->sendSynchronously(message);
}

void ZRKXPCClient::cancel()
{
    std::shared_ptr<Connection> canceled;
    _state->internalLock->sync([&] {
        canceled = std::move(_state->connection);
        if (canceled)
            canceled->cancel();
    });
}
