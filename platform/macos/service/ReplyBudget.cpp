#include "platform/macos/service/ReplyBudget.h"

#include <algorithm>

namespace platform {

bool ReplyBudget::connect(std::uint32_t user)
{
    auto& connections = _users[user].connections;
    if (connections >= UserConnections)
        return false;
    ++connections;
    return true;
}

void ReplyBudget::disconnect(std::uint32_t user)
{
    if (const auto found = _users.find(user); found != _users.end() && found->second.connections > 0)
        --found->second.connections;
    forgetIdle(user);
}

// A user may have the half of what the others have left.
bool ReplyBudget::charge(std::uint32_t user, std::size_t size)
{
    auto& own = _users[user];
    const auto left = TotalSize - std::min(TotalSize, _outstanding - own.outstanding);
    if (own.outstanding > 0 && own.outstanding + size > std::min(UserSize, left / 2)) {
        forgetIdle(user);
        return false;
    }
    own.outstanding += size;
    _outstanding += size;
    return true;
}

void ReplyBudget::taken(std::uint32_t user, std::size_t size)
{
    const auto found = _users.find(user);
    if (found == _users.end())
        return;
    const auto amount = std::min(size, found->second.outstanding);
    found->second.outstanding -= amount;
    _outstanding -= amount;
    forgetIdle(user);
}

std::size_t ReplyBudget::outstanding(std::uint32_t user) const
{
    const auto found = _users.find(user);
    return found == _users.end() ? 0 : found->second.outstanding;
}

void ReplyBudget::forgetIdle(std::uint32_t user)
{
    if (const auto found = _users.find(user);
        found != _users.end() && found->second.connections == 0 && found->second.outstanding == 0)
        _users.erase(found);
}

} // namespace platform
