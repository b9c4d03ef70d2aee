#pragma once

#include "platform/linux/system/bus/BusHandles.h"
#include "platform/ServicePeer.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace platform {

// Who has sent messages to a connection and has not left the bus since, and what they have not read yet.
//
// The bus keeps what a peer does not read, counts it against the sender, and takes nothing more from a sender that has
// too much of it outstanding. So a user whose programs do not read is cut off long before: when much was sent to them,
// some of their connections are asked for a sign of life, which can come only after it has read everything before.
// Connections whose user the bus has not told yet count as one user together until it does, and get little.
//
// What a user who is cut off calls for is refused: a few calls of each connection at once, the others, of which only
// the numbers are kept, as soon as it has read those or its user is not cut off any more.
//
// Used on one thread.
class BusPeers {
public:
    using UserName = std::optional<std::uint32_t>; // nullopt as long as the bus has not told
    using Identified = std::function<void(const ServicePeer&)>;
    using Left = std::function<void(const std::string&)>;
    using Refuse = std::function<void(const std::string& name, std::uint64_t call)>;

    static constexpr std::size_t SignOfLifeSize = std::size_t(2) << 20; // unread, from which on a sign is asked for
    static constexpr std::size_t CutOffSize = std::size_t(16) << 20;    // unread, from which on nothing more is sent
    static constexpr std::size_t TotalSize = std::size_t(64) << 20;     // unread of all users; what is left is shared
    static constexpr std::size_t RefusalSize = 1024;
    static constexpr std::size_t RefusalsSize = 8192;   // unread, up to which a connection is told of the cut-off
    static constexpr std::size_t MaximumWaiting = 1024; // calls of a connection; the bus allows 128 at a time as a rule

    // The bus outlives this object. "Refuse" sends an error of RefusalSize, which is charged.
    BusPeers(sd_bus* bus, Identified identified, Left left, Refuse refuse);

    // Watches for peers that leave. A negative errno value on failure.
    int watch();

    // A message has come from this peer. Asks the bus who it is when it is the first.
    void note(const std::string& name);
    bool isKnown(const std::string& name) const { return _peers.contains(name); }
    UserName userOf(const std::string& name) const;

    // So many bytes are to be sent to the peer. False when it has read too little of what was sent before.
    bool charge(const std::string& name, std::size_t size);
    // The peer's call of this number is refused, now or later. Of more than are kept the oldest is given up.
    void refuse(const std::string& name, std::uint64_t call);
    // What was charged is on its way.
    void sent(const std::string& name, std::size_t size);
    // Of a peer that the bus has not told about yet: false.
    bool isCutOff(const std::string& name) const;

private:
    // A call that the bus or a peer owes an answer to.
    struct Question {
        BusPeers* owner;
        std::string name;
        std::size_t unread; // bytes at the moment of the question
        BusSlot slot;
        std::list<Question>::iterator place;
    };
    struct Load {
        std::size_t unread = 0;    // bytes
        std::size_t unsent = 0;    // bytes of them
        std::size_t asked = 0;     // bytes of them which a sign of life will tell to be read
        std::size_t questions = 0; // for signs of life
        std::size_t waiting = 0;   // calls to be refused
        Load& operator+=(const Load& other);
        Load& operator-=(const Load& other);
    };
    struct User {
        Load load;
        std::size_t peerCount = 0;
    };
    struct State {
        UserName user;
        ServicePeer peer;
        Load load;
        std::size_t refusals = 0;           // of what is unread
        std::vector<std::uint64_t> waiting; // calls to be refused, in order
        Question* question = nullptr;       // for a sign of life
    };

    static int handleNameLost(sd_bus_message* signal, void* peers, sd_bus_error*);
    static int handleCredentials(sd_bus_message* reply, void* question, sd_bus_error*);
    static int handleSign(sd_bus_message* reply, void* question, sd_bus_error*);

    Question& addQuestion(const std::string& name);
    void askWhoTheyAre();
    void identify(const std::string& name, sd_bus_message* reply);
    void enter(State& state, UserName user);
    void leave(const State& state);
    void add(State& state, const Load& load);
    void subtract(State& state, const Load& load);
    bool hasLeftTooMuch(UserName user) const;
    void refuseWaiting(const std::string& name, State& state);
    void refuseWaiting();
    void askForSigns(UserName user);
    bool askForSign(const std::string& name, State& state);
    void endQuestion(State& state);
    void forget(const std::string& name);

    sd_bus* const _bus;
    const Identified _identified;
    const Left _left;
    const Refuse _refuse;
    std::map<std::string, State, std::less<>> _peers;
    std::map<UserName, User> _users;
    Load _load; // of all
    std::list<Question> _questions;
    std::deque<std::string> _strangers; // whom the bus was not asked about yet, and some who have left
    std::size_t _askedCount = 0;        // whom the bus was asked about and has not told
    BusSlot _departures;
};

} // namespace platform
