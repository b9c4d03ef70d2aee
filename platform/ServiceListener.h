#pragma once

#include "platform/Authorization.h"
#include "platform/ServiceConnection.h"
#include "platform/ServicePeer.h"

#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform {

// A key that is read, and the most bytes that its value may have.
struct ServiceKey {
    std::string name;
    std::size_t maximumSize;
};

// The serving side of a named endpoint: takes the name and hands every request to one handler. What is told and
// answered on the thread of run() speaks of the same peers throughout.
class ServiceListener {
public:
    struct Request {
        ServiceDictionary message;        // entries of other types than 64-bit integer and bytes are left out
        std::vector<std::string> tooLong; // keys of the form whose bytes are more than they may be, left out too
        std::string sender;               // the connection that sent it, as the transport itself names it
    };
    // Sends the reply. Any thread, once. When every copy is dropped unused the sender gets an error. Null when the
    // request asked for no reply.
    using Reply = std::function<void(ServiceDictionary)>;
    // What is called on the thread of run(), and must not block.
    struct Handlers {
        std::function<void(Request, Reply)> received;
        std::function<void(const ServicePeer&)>
            identified;                               // once for each sender, after its first request was received
        std::function<void(const std::string&)> left; // the sender of this name is gone
    };

    // Fails with a sentence for the log when there is no transport or the name cannot be owned. With a form, requests
    // hold its keys and no other, and one that is too long to be looked through is refused.
    static std::expected<std::unique_ptr<ServiceListener>, std::string>
    create(const std::string& serviceName, Handlers handlers, std::vector<ServiceKey> form = {});
    virtual ~ServiceListener() = default;

    // SIGTERM and SIGINT stop the listener from now on. Every thread of the process must have them blocked.
    virtual void stopOnTermination() = 0;
    // Whether a signal, rather than stop(), has ended run().
    virtual bool wasTerminated() const = 0;

    // Serves until it is stopped (true) or until the transport is lost or the name is taken away (false). What was
    // queued for sending is sent, for up to a second.
    virtual bool run() = 0;
    // After run(): sends the replies that were given since, in the same way.
    virtual void flush() = 0;
    // Any thread, and safe in a signal handler.
    virtual void stop() = 0;

    // Runs a task on the thread of run(), in order. Any thread; the task is dropped when the listener has ended.
    virtual void async(std::function<void()> task) = 0;
    // Whether an authorization that a peer has sent holds a right.
    struct RightQuestion {
        std::string peer;
        Authorization::ExternalForm form{}; // that the peer has sent, and may send
        std::string right;
    };
    // Asks the authority, without a dialog. On the thread of run(), as is the answer; none comes when the transport is
    // lost.
    virtual void copyRight(const RightQuestion& question, std::function<void(Authorization::Status)> answer) = 0;
};

} // namespace platform
