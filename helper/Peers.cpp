#include "helper/Peers.h"

#include <algorithm>

namespace helper {

void Peers::add(const std::string& name)
{
    const std::lock_guard guard(_lock);
    _peers.try_emplace(name);
}

void Peers::setUsesHelper(const std::string& name)
{
    const std::lock_guard guard(_lock);
    if (const auto found = _peers.find(name); found != _peers.end())
        found->second.usesHelper = true;
}

void Peers::identify(const platform::ServicePeer& peer)
{
    const std::lock_guard guard(_lock);
    _peers[peer.name].identity = peer;
}

void Peers::remove(const std::string& name)
{
    const std::lock_guard guard(_lock);
    _peers.erase(name);
}

std::optional<platform::ServicePeer> Peers::identified(const std::string& name) const
{
    const std::lock_guard guard(_lock);
    const auto found = _peers.find(name);
    return found == _peers.end() ? std::nullopt : found->second.identity;
}

bool Peers::anyConnected() const
{
    const std::lock_guard guard(_lock);
    return std::ranges::any_of(_peers, [](const auto& entry) { return entry.second.usesHelper; });
}

bool Peers::othersConnected(const std::string& name) const
{
    const std::lock_guard guard(_lock);
    // A program may have more than one connection.
    const auto own = _peers.find(name);
    const auto process = own == _peers.end() || !own->second.identity ? 0 : own->second.identity->process;
    return std::ranges::any_of(_peers, [&](const auto& entry) {
        const auto& identity = entry.second.identity;
        return entry.first != name && entry.second.usesHelper
            && (!identity || process == 0 || identity->process != process);
    });
}

} // namespace helper
