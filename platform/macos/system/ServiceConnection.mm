#include "platform/ServiceConnection.h"

#include "platform/macos/system/DispatchQueue.h"

#include <atomic>
#include <utility>
#include <xpc/xpc.h>

namespace platform {

namespace {

xpc_object_t xpcDictionary(const ServiceDictionary& dictionary)
{
    const xpc_object_t made = xpc_dictionary_create(nullptr, nullptr, 0);
    for (const auto& [key, value] : dictionary) {
        if (const auto* const number = std::get_if<std::int64_t>(&value))
            xpc_dictionary_set_int64(made, key.c_str(), *number);
        else if (const auto* const bytes = std::get_if<Data>(&value))
            xpc_dictionary_set_data(made, key.c_str(), bytes->data(), bytes->size());
    }
    return made;
}

// Values of other types are left out.
ServiceDictionary serviceDictionary(xpc_object_t dictionary)
{
    ServiceDictionary read;
    ServiceDictionary* const entries = &read;
    xpc_dictionary_apply(dictionary, ^bool(const char* key, xpc_object_t value) {
        if (xpc_get_type(value) == XPC_TYPE_INT64) {
            entries->emplace(key, xpc_int64_get_value(value));
        } else if (xpc_get_type(value) == XPC_TYPE_DATA) {
            const auto* const bytes = static_cast<const std::uint8_t*>(xpc_data_get_bytes_ptr(value));
            entries->emplace(key, Data(bytes, bytes + xpc_data_get_length(value)));
        }
        return true;
    });
    return read;
}

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
