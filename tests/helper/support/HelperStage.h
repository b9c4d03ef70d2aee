#pragma once

#include "messaging/ZRKXPCClient.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PolkitAuthority.h"
#include "tests/support/PrivateBus.h"

#include <memory>

// The helper's program, a client of it, and an authority that is asked about its rights, on a bus of their own. Set the
// environment before.
class HelperStage {
public:
    explicit HelperStage(PolkitAuthority::Answer answer);

    // What the authority says about every right of the helper.
    void answerEverything(PolkitAuthority::Answer answer);

    // Ends the program and starts this command in its place.
    void launch(const ChildProcess::Arguments& command, const ChildProcess::Environment& environment = {});
    // The same, and waits until it answers.
    void start(const ChildProcess::Arguments& command, const ChildProcess::Environment& environment = {});

    bool hasProgram() const { return _program != nullptr; }
    ChildProcess& program() { return *_program; }
    PolkitAuthority& authority() { return *_authority; }
    ZRKXPCClient& client() { return *_client; }
    PrivateBus& bus() { return _bus; }

private:
    PrivateBus _bus;
    std::unique_ptr<PolkitAuthority> _authority;
    std::unique_ptr<ChildProcess> _program;
    std::unique_ptr<ZRKXPCClient> _client;
};
