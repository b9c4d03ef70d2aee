#pragma once

#include "platform/ServicePeer.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace helper {

// Who has sent messages and is still connected, by the unique names that the bus reports. Any thread.
class Peers {
public:
    void add(const std::string& name);
    // It does more than watch the status of backups, so that the installation must not change beneath it.
    void setUsesHelper(const std::string& name);
    void identify(const platform::ServicePeer& peer); // also of one that comes with its first request later
    void remove(const std::string& name);

    // nullopt until the peer was identified, and after it has left.
    std::optional<platform::ServicePeer> identified(const std::string& name) const;

    // Whether anybody who uses the helper is still connected.
    bool anyConnected() const;
    // Whether another program than that of `name` uses the helper and is still connected.
    bool othersConnected(const std::string& name) const;

private:
    struct Peer {
        std::optional<platform::ServicePeer> identity;
        bool usesHelper = false;
    };

    mutable std::mutex _lock;
    std::map<std::string, Peer, std::less<>> _peers;
};

} // namespace helper
