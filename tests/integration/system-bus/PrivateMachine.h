#pragma once

#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <memory>
#include <string>

// The real system bus with its real policy, launch helper and polkit, beside those of the machine: everything that they
// read and write is this process's own, in a mount namespace that ends with it. It has one administrator and two users.
// Needs root and the right to make a namespace.
class PrivateMachine {
public:
    static constexpr unsigned PlainUser = 23451;
    static constexpr unsigned OtherUser = 23452;
    static constexpr unsigned Administrator = 23453;

    // The one of this process; null when it can't be made, and then the reason has been printed as SKIPPED.
    static PrivateMachine* shared();
    ~PrivateMachine();
    PrivateMachine(const PrivateMachine&) = delete;
    PrivateMachine& operator=(const PrivateMachine&) = delete;

    // Programs run as a user, with this bus.
    std::unique_ptr<ChildProcess> startClient(unsigned user = PlainUser) const;
    // An agent for the client, registered.
    std::unique_ptr<ChildProcess> startAgent(const ChildProcess& client, const std::string& mode,
                                             unsigned user = PlainUser) const;

    // The process that owns a name on the bus, or -1.
    pid_t ownerOf(const std::string& name) const;

private:
    PrivateMachine();
    void layOut();
    void addUsers();
    void bind(const std::string& content, const std::string& over) const;
    void bindFolder(const std::string& over);

    TemporaryDirectory _directory;
    std::unique_ptr<ChildProcess> _bus;
};
