#include "tests/helper/RunningHelper.h"

#include "platform/AtomicFile.h"
#include "platform/Authorization.h"
#include "platform/PropertyListCoding.h"

using platform::Data;

RunningHelper::RunningHelper(PolkitAuthority::Answer answer)
    : _rootVariable("BREVANE_ROOT", _root.path()),
      _home("HOME", _root.file("home")),
      _stage(answer)
{
    start();
}

void RunningHelper::start(ChildProcess::Arguments command)
{
    // No test that is about something else asks a server.
    auto updates = binaryData(platform::Dictionary{{"Feed", "file:///nonexistent"}, {"PublicKey", Data(32)}});
    auto path = _root.write("updates.plist", std::string(updates.begin(), updates.end()));
    command.insert(command.end(), {BREVANE_SCHEDULER_HELPER, "--root", root(), "--updates", path});
    // What the environment says about a root is none of the helper's business.
    _stage.start(command, ChildProcess::Environment{{"BREVANE_ROOT", "/nonexistent"}});
}

platform::ServiceReply RunningHelper::send(const platform::ServiceDictionary& message)
{
    return client().sendSynchronousXPCMessage(message);
}

std::optional<platform::PropertyList> RunningHelper::storedSettings() const
{
    auto bytes = platform::readFile(settingsPath());
    if (!bytes)
        return std::nullopt;
    auto value = platform::propertyListWithData(*bytes);
    return value ? std::optional(*value) : std::nullopt;
}

std::string RunningHelper::log() const
{
    std::string text;
    for (const auto* folder : {"Library/Logs/Brevane/", "home/Library/Logs/Brevane/"}) {
        auto bytes = platform::readFile(_root.file(folder + std::string("scheduler.log")));
        text.append(bytes ? std::string(bytes->begin(), bytes->end()) : std::string());
    }
    return text;
}

Data tokenOf(std::string_view text)
{
    Data token(text.begin(), text.end());
    token.resize(std::tuple_size_v<platform::Authorization::ExternalForm>);
    return token;
}
