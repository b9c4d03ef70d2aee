#include "helper/Peers.h"

#include <algorithm>

namespace helper {

void Peers::add(const std::string& name)
{
    const std::lock_guard guard(_lock);
    _peers.try_emplace(name);
}

void Peers::identify(const platform::BusPeer& peer)
{
    const std::lock_guard guard(_lock);
    if (const auto found = _peers.find(peer.name); found != _peers.end())
        found->second = peer;
}

void Peers::remove(const std::string& name)
{
    const std::lock_guard guard(_lock);
    _peers.erase(name);
}

std::optional<platform::BusPeer> Peers::identified(const std::string& name) const
{
    const std::lock_guard guard(_lock);
    const auto found = _peers.find(name);
    return found == _peers.end() ? std::nullopt : found->second;
}

bool Peers::anyConnected() const
{
    const std::lock_guard guard(_lock);
    return !_peers.empty();
}

bool Peers::othersConnected(const std::string& name) const
{
    const std::lock_guard guard(_lock);
    // A program may have more than one connection.
    const auto own = _peers.find(name);
    const auto process = own == _peers.end() || !own->second ? 0 : own->second->process;
    return std::ranges::any_of(_peers, [&](const auto& entry) {
        return entry.first != name && (!entry.second || process == 0 || entry.second->process != process);
    });
}

} // namespace helper
