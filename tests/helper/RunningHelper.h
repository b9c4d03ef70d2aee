#pragma once

#include "tests/helper/support/HelperStage.h"
#include "tests/helper/support/Replies.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <optional>
#include <string>
#include <string_view>

// The helper on a stage of its own, with a root of its own.
class RunningHelper {
public:
    explicit RunningHelper(PolkitAuthority::Answer answer = PolkitAuthority::Answer::KeptGrant);

    // Starts the program again, and waits until it answers. A command before it starts it.
    void start(ChildProcess::Arguments command = {});
    void answerEverything(PolkitAuthority::Answer answer) { _stage.answerEverything(answer); }

    ChildProcess& program() { return _stage.program(); }
    PolkitAuthority& authority() { return _stage.authority(); }
    ZRKXPCClient& client() { return _stage.client(); }
    PrivateBus& bus() { return _stage.bus(); }
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
    HelperStage _stage;
};

// Bytes that no process has got for itself.
platform::Data tokenOf(std::string_view text);
