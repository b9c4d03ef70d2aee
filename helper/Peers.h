#pragma once

#include "platform/linux/system/bus/BusPeers.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>

namespace helper {

// Who has sent messages and is still connected, by the unique names that the bus reports. Any thread.
class Peers {
public:
    void add(const std::string& name);
    void identify(const platform::BusPeer& peer); // ignored when it was not added, or is removed already
    void remove(const std::string& name);

    // nullopt until the peer was identified, and after it has left.
    std::optional<platform::BusPeer> identified(const std::string& name) const;

    // Whether anybody who has sent messages is still connected.
    bool anyConnected() const;
    // Whether another program than that of `name` has sent messages and is still connected.
    bool othersConnected(const std::string& name) const;

private:
    mutable std::mutex _lock;
    std::map<std::string, std::optional<platform::BusPeer>, std::less<>> _peers;
};

} // namespace helper
