#include "tests/helper/RunningHelper.h"

#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "platform/Authorization.h"
#include "platform/ErrorArchive.h"
#include "platform/linux/system/files/AtomicFile.h"
#include "platform/PropertyListCoding.h"

#include <algorithm>
#include <chrono>
#include <doctest/doctest.h>
#include <stdexcept>
#include <thread>

using platform::Data;

namespace {

Data bytesIn(const platform::ServiceReply& reply, std::string_view key)
{
    REQUIRE(reply.has_value());
    CHECK(reply->size() == 1);
    auto found = reply->find(key);
    REQUIRE(found != reply->end());
    return std::get<Data>(found->second);
}

} // namespace

RunningHelper::RunningHelper(PolkitAuthority::Answer answer)
    : _rootVariable("BREVANE_ROOT", _root.path()),
      _home("HOME", _root.file("home")),
      _authority(std::make_unique<PolkitAuthority>()),
      _client(std::make_unique<ZRKXPCClient>(BRVSchedulerServiceName))
{
    answerEverything(answer);
    start();
}

void RunningHelper::start(ChildProcess::Arguments command)
{
    // No test that is about something else asks a server.
    auto updates = binaryData(platform::Dictionary{{"Feed", "file:///nonexistent"}, {"PublicKey", Data(32)}});
    auto path = _root.write("updates.plist", std::string(updates.begin(), updates.end()));
    command.insert(command.end(), {BREVANE_SCHEDULER_HELPER, "--root", root(), "--updates", path});
    _program.reset();
    // What the environment says about a root is none of the helper's business.
    _program = std::make_unique<ChildProcess>(command, ChildProcess::Environment{{"BREVANE_ROOT", "/nonexistent"}});
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!send({{"message", BRVMessageGetAutoUpdates}})) {
        if (!_program->isRunning() || std::chrono::steady_clock::now() > end)
            throw std::runtime_error("the helper does not serve");
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

void RunningHelper::answerEverything(PolkitAuthority::Answer answer)
{
    for (const auto* right : {BRVRightModifySettings1, BRVRightModifySettings2, BRVRightUninstall})
        _authority->setAnswer(right, answer);
}

platform::ServiceReply RunningHelper::send(const platform::ServiceDictionary& message)
{
    return _client->sendSynchronousXPCMessage(message);
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

platform::PropertyList resultIn(const platform::ServiceReply& reply)
{
    auto value = platform::propertyListWithData(bytesIn(reply, "payload"));
    REQUIRE(value.has_value());
    return *value;
}

platform::Error errorIn(const platform::ServiceReply& reply)
{
    auto error = platform::unarchivedError(bytesIn(reply, "error"), true);
    REQUIRE(error.has_value());
    return *error;
}

Data ownToken()
{
    auto authorization = platform::Authorization::create();
    REQUIRE(authorization.has_value());
    auto form = (*authorization)->makeExternalForm();
    REQUIRE(form.has_value());
    return Data(form->begin(), form->end());
}

Data tokenOf(std::string_view text)
{
    Data token(text.begin(), text.end());
    token.resize(std::tuple_size_v<platform::Authorization::ExternalForm>);
    return token;
}

Data binaryData(const platform::PropertyList& value)
{
    auto bytes = platform::binaryPropertyList(value);
    REQUIRE(bytes.has_value());
    return *bytes;
}
