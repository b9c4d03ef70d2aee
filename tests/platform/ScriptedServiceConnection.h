#pragma once

#include "platform/ServiceConnection.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

// The scheduler helper as a test plays it. Any thread.
namespace scripted::service {

enum class Mode { OneWay, Asynchronous, Synchronous };

struct Request {
    std::size_t connection = 0; // its place in connections()
    Mode mode = Mode::OneWay;
    platform::ServiceDictionary message;
};

struct Connection {
    std::string serviceName;
    unsigned flags = 0;
    std::shared_ptr<platform::Queue> target;
    bool resumed = false;
    bool canceled = false;
};

// Forgets the script and the records. Connections left from before become invalid, and their owners have heard it when
// this returns.
void reset();

// The replies of the next requests, in order. When there are none the handler answers, and without a handler the
// service does not exist: Invalid. A failure is also told to the connection's event handler, before the reply
// arrives. One-way requests reach the handler only.
void answer(platform::ServiceReply reply);
void setHandler(std::function<platform::ServiceReply(const platform::ServiceDictionary&)> handler);

// From now on requests wait for their replies until release(), interrupt(), invalidate() or their connection's cancel.
void hold();
void release();

// The service goes away, or becomes unusable: every request that waits fails so, and every connection hears it. On
// return they have.
void interrupt();
void invalidate();

// What was sent and which connections were made since reset(), in order.
std::vector<Request> requests();
std::vector<Connection> connections();

// Whether so many requests were sent within ten seconds.
bool waitForRequests(std::size_t count);

} // namespace scripted::service
