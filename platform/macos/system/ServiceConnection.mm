#include "platform/ServiceConnection.h"

#include "platform/macos/system/DispatchQueue.h"
#include "platform/macos/system/XPCDictionary.h"

#include <atomic>
#include <utility>
#include <xpc/xpc.h>

namespace platform {

namespace {

ServiceReply serviceReply(xpc_object_t reply)
{
    if (xpc_get_type(reply) == XPC_TYPE_DICTIONARY)
        return serviceDictionary(reply);
    return std::unexpected(reply == XPC_ERROR_CONNECTION_INTERRUPTED ? ServiceError::Interrupted
                                                                     : ServiceError::Invalid);
}

class XPCServiceConnection final : public ServiceConnection {
public:
    explicit XPCServiceConnection(xpc_connection_t connection) : _connection(connection) { setEventHandler(nullptr); }

    // A connection may be let go only when it has been resumed and cancelled.
    ~XPCServiceConnection() override
    {
        resume();
        cancel();
    }

    void setEventHandler(EventHandler handler) override
    {
        const auto isInvalid = _isInvalid;
        xpc_connection_set_event_handler(_connection, ^(xpc_object_t event) {
            if (event == XPC_ERROR_CONNECTION_INVALID)
                isInvalid->store(true);
            if (!handler)
                return;
            if (event == XPC_ERROR_CONNECTION_INTERRUPTED)
                handler(ServiceError::Interrupted);
            else if (event == XPC_ERROR_CONNECTION_INVALID)
                handler(ServiceError::Invalid);
        });
    }

    void resume() override
    {
        if (!_isResumed.exchange(true))
            xpc_connection_resume(_connection);
    }

    void send(const ServiceDictionary& message) override
    {
        xpc_connection_send_message(_connection, xpcDictionary(message));
    }

    void send(const ServiceDictionary& message, std::shared_ptr<Queue> replyQueue, ReplyHandler handler) override
    {
        const auto isInvalid = _isInvalid;
        xpc_connection_send_message_with_reply(_connection, xpcDictionary(message), dispatchQueue(replyQueue),
                                               ^(xpc_object_t reply) {
                                                   if (reply == XPC_ERROR_CONNECTION_INVALID)
                                                       isInvalid->store(true);
                                                   handler(serviceReply(reply));
                                               });
    }

    ServiceReply sendSynchronously(const ServiceDictionary& message) override
    {
        const auto reply = xpc_connection_send_message_with_reply_sync(_connection, xpcDictionary(message));
        if (reply == XPC_ERROR_CONNECTION_INVALID)
            _isInvalid->store(true);
        return serviceReply(reply);
    }

    void cancel() override { xpc_connection_cancel(_connection); }

    bool isInvalid() const override { return *_isInvalid; }

private:
    xpc_connection_t _connection;
    const std::shared_ptr<std::atomic<bool>> _isInvalid = std::make_shared<std::atomic<bool>>(false);
    std::atomic<bool> _isResumed = false;
};

} // namespace

std::shared_ptr<ServiceConnection> ServiceConnection::create(const std::string& serviceName,
                                                             std::shared_ptr<Queue> target, unsigned flags)
{
    static_assert(Privileged == XPC_CONNECTION_MACH_SERVICE_PRIVILEGED);
    return std::make_shared<XPCServiceConnection>(
        xpc_connection_create_mach_service(serviceName.c_str(), dispatchQueue(target), flags));
}

} // namespace platform
