#include "helper/Peers.h"

#include "platform/linux/system/bus/BusPeer.h"

#include <algorithm>

namespace helper {

void Peers::add(const std::string& name)
{
    std::unique_lock guard(_lock);
    if (_names.contains(name))
        return;
    if (_names.size() >= maximumNames) {
        guard.unlock();
        forgetThoseGone();
        guard.lock();
    }
    if (_names.size() < maximumNames)
        _names.insert(name);
}

bool Peers::anyConnected()
{
    forgetThoseGone();
    const std::lock_guard guard(_lock);
    return !_names.empty();
}

bool Peers::othersConnected(const std::string& name)
{
    forgetThoseGone();
    // A program may have had more than one connection.
    auto process = platform::processOfBusPeer(name);
    std::set<std::string> names;
    {
        const std::lock_guard guard(_lock);
        names = _names;
    }
    return std::ranges::any_of(names, [&](const auto& other) {
        auto found = other == name ? std::nullopt : platform::processOfBusPeer(other);
        return found && found != process;
    });
}

void Peers::forgetThoseGone()
{
    std::set<std::string> names;
    {
        const std::lock_guard guard(_lock);
        names = _names;
    }
    // The bus is asked without the lock: it may take its time.
    std::erase_if(names, [](const auto& name) { return platform::processOfBusPeer(name).has_value(); });
    const std::lock_guard guard(_lock);
    for (const auto& gone : names)
        _names.erase(gone);
}

} // namespace helper
