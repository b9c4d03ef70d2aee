#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

namespace platform {

// What peers have not taken yet of what they are sent, and how many connections each user has: what the transport keeps
// for a program that does not read is this process's memory, so a user who lets too much of it gather is cut off, and
// nobody else is. Used on one thread at a time.
class ReplyBudget {
public:
    static constexpr std::size_t UserSize = std::size_t(16) << 20;  // bytes, from which on nothing more is sent
    static constexpr std::size_t TotalSize = std::size_t(64) << 20; // of all users; what is left of it is shared
    static constexpr std::size_t UserConnections = 256;

    // False when the user has too many.
    bool connect(std::uint32_t user);
    void disconnect(std::uint32_t user);

    // So many bytes are to be sent to a connection of the user. False when it has taken too little of what was sent
    // before. What a single reply needs is had once, also when it is more than that.
    bool charge(std::uint32_t user, std::size_t size);
    // They are with the peer, or it is gone.
    void taken(std::uint32_t user, std::size_t size);

    std::size_t outstanding(std::uint32_t user) const;
    std::size_t outstanding() const { return _outstanding; }

private:
    struct User {
        std::size_t connections = 0;
        std::size_t outstanding = 0; // bytes
    };
    void forgetIdle(std::uint32_t user);

    std::map<std::uint32_t, User> _users;
    std::size_t _outstanding = 0;
};

} // namespace platform
