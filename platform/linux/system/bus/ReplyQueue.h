#pragma once

#include "platform/linux/system/bus/BusHandles.h"
#include "platform/linux/system/bus/BusPeers.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>

namespace platform {

// Replies on their way to the bus, a line for each user, sent in turns. While many connections fill it, the bus takes
// only about one reply from a connection in each of its rounds, and first come, first served would let whoever asks
// most have nearly all of them. So little is handed on at a time, and what it is for is decided as late as possible.
//
// Whoever adds has charged the peer. Used on one thread.
class ReplyQueue {
public:
    // Both outlive this object.
    ReplyQueue(sd_bus* bus, BusPeers& peers);

    // Sends it at once when nothing else waits. Dropped when the peer leaves before.
    void add(const std::string& peer, std::size_t size, BusMessage message);
    // Sends what the bus takes without waiting.
    void send();
    // Who waits for this peer's user to be known goes to the line of that user.
    void identify(const ServicePeer& peer);

    bool isEmpty() const { return _lines.empty(); }

private:
    using UserName = std::optional<std::uint32_t>;
    struct Reply {
        std::string peer;
        std::size_t size;
        BusMessage message;
    };

    bool hasRoom() const;
    void sendNext();

    sd_bus* const _bus;
    BusPeers& _peers;
    std::map<UserName, std::deque<Reply>> _lines; // none is empty
    UserName _last;                               // whose turn it was
};

} // namespace platform
