#pragma once

#include "messaging/ZRKXPCClient.h"
#include "platform/Error.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/PolkitAuthority.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryDirectory.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

// The helper's program on a bus of its own, beside an authority that is asked about everything.
class RunningHelper {
public:
    explicit RunningHelper(PolkitAuthority::Answer answer = PolkitAuthority::Answer::KeptGrant);

    // Starts the program again, and waits until it answers. A command before it starts it.
    void start(ChildProcess::Arguments command = {});
    void answerEverything(PolkitAuthority::Answer answer);

    ChildProcess& program() { return *_program; }
    PolkitAuthority& authority() { return *_authority; }
    ZRKXPCClient& client() { return *_client; }
    PrivateBus& bus() { return _bus; }
    std::string root() const { return _root.path(); }
    std::string settingsPath() const { return _root.file("Library/Preferences/com.zerkolin.brevane.scheduler.plist"); }

    // One request as it is, without the application's side of the protocol.
    platform::ServiceReply send(const platform::ServiceDictionary& message);
    std::optional<platform::PropertyList> storedSettings() const;
    std::string log() const;

private:
    TemporaryDirectory _root;
    EnvironmentVariable _rootVariable;
    EnvironmentVariable _home;
    PrivateBus _bus;
    std::unique_ptr<PolkitAuthority> _authority;
    std::unique_ptr<ChildProcess> _program;
    std::unique_ptr<ZRKXPCClient> _client;
};

// What a reply says, read as the application reads it.
platform::PropertyList resultIn(const platform::ServiceReply& reply);
platform::Error errorIn(const platform::ServiceReply& reply);

// The 32 bytes that stand for this process, and those of any text.
platform::Data ownToken();
platform::Data tokenOf(std::string_view text);
platform::Data binaryData(const platform::PropertyList& value);
