#pragma once

#include "platform/ServiceConnection.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>

namespace platform {

// The serving side of a named endpoint: takes the name on the system bus and hands every request to one handler.
class ServiceListener {
public:
    struct Request {
        ServiceDictionary message; // entries of other types than 64-bit integer and bytes are left out
        std::string sender;        // the unique name of the connection that sent it, as the bus itself reports
    };
    // Sends the reply. Any thread, once; nothing is sent when the request asked for none.
    using Reply = std::function<void(ServiceDictionary)>;
    using Handler = std::function<void(Request, Reply)>;

    // Fails with a sentence for the log when there is no bus or the name cannot be owned. The handler runs on the
    // thread of run(); it must not block.
    static std::expected<std::unique_ptr<ServiceListener>, std::string> create(const std::string& serviceName,
                                                                               Handler handler);
    virtual ~ServiceListener() = default;

    // Serves until stop() (true) or until the bus is lost or the name is taken away (false).
    virtual bool run() = 0;
    // Any thread, and safe in a signal handler.
    virtual void stop() = 0;
};

} // namespace platform
