#pragma once

#include "helper/RequestReader.h"
#include "platform/ServicePeer.h"

#include <functional>
#include <memory>

namespace helper {

// How one message number is served, once its sender may send it.
struct Service {
    enum class Lane {
        Reading,  // what changes nothing
        Changing, // one at a time, whoever asks; it also waits for the disk
    };
    struct Call {
        std::int64_t message;
        platform::ServicePeer sender;
        RequestReader::Payload payload; // nullopt when there is none, or when the message has none
        std::shared_ptr<void> turn;     // the next request of this user in this lane begins when every copy is gone
    };
    using Outcome = platform::Result<platform::PropertyList>;
    // Called once, from any thread, at once or later.
    using Completion = std::function<void(Outcome)>;

    // A reply that is ready at any moment: given on the bus's own thread, without a turn. Only for messages that need
    // neither a right nor a payload.
    std::function<platform::ServiceDictionary()> ready;

    // Otherwise: on the queue of its lane, which must not wait for anything but the disk. Work that takes longer goes
    // to a queue of its own, and completes later.
    Lane lane = Lane::Reading;
    bool hasPayload = false; // otherwise a payload is ignored, unread
    std::function<void(const Call&, const Completion&)> perform;
};

} // namespace helper
