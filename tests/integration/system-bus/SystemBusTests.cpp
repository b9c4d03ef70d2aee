#include "tests/integration/system-bus/PrivateMachine.h"

#include <chrono>
#include <csignal>
#include <doctest/doctest.h>
#include <thread>

namespace {

const std::string Prompt = "You must authenticate to change the product settings.";
const std::string NotAuthorized = "com.zerkolin.messager 0 com.zerkolin.authorization 6";
const std::string Dismissed = "com.zerkolin.messager 0 com.zerkolin.authorization 0";
constexpr const char* Helper = "com.zerkolin.brevane.scheduler";
constexpr const char* Authority = "org.freedesktop.PolicyKit1";

std::string tell(ChildProcess& client, const std::string& command)
{
    client.write(command + "\n");
    return client.readLine(30000).value_or("nothing");
}

// How many dialogs the agent would have shown so far.
int dialogCount(ChildProcess& agent)
{
    int count = 0;
    while (const auto line = agent.readLine(100)) {
        CHECK(*line == Prompt);
        ++count;
    }
    return count;
}

} // namespace

TEST_CASE("on a system bus everyone reaches the helper, which runs as root, but only root may own its name")
{
    PrivateMachine* machine = PrivateMachine::shared();
    if (!machine)
        return;
    const auto client = machine->startClient();
    CHECK(tell(*client, "get") == "ok");
    const pid_t helper = machine->ownerOf(Helper);
    REQUIRE(helper > 0);
    kill(helper, SIGKILL);
    while (machine->ownerOf(Helper) == helper)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    const std::string refusal = tell(*client, "own");
    CHECK(refusal.find("the name cannot be owned (Permission denied)") != std::string::npos);
    CHECK(tell(*client, "get") == "ok");
    CHECK(machine->ownerOf(Helper) != helper);
}

TEST_CASE("on a system bus an administrator's consent lets a user change settings and is asked for once")
{
    PrivateMachine* machine = PrivateMachine::shared();
    if (!machine)
        return;
    const auto client = machine->startClient();
    const auto agent = machine->startAgent(*client, "yes");
    CHECK(tell(*client, "set") == "ok");
    CHECK(tell(*client, "set") == "ok");
    CHECK(dialogCount(*agent) == 1);
    CHECK(tell(*client, "silent") == "0");
}

TEST_CASE("on a system bus a dismissed dialog is a cancelled authorization, and the second right is not asked for")
{
    PrivateMachine* machine = PrivateMachine::shared();
    if (!machine)
        return;
    const auto client = machine->startClient();
    const auto agent = machine->startAgent(*client, "cancel");
    CHECK(tell(*client, "set") == Dismissed);
    CHECK(dialogCount(*agent) == 1);
    CHECK(tell(*client, "ask") == "-60006");
}

TEST_CASE("on a system bus a refused password denies both rights")
{
    PrivateMachine* machine = PrivateMachine::shared();
    if (!machine)
        return;
    const auto client = machine->startClient();
    const auto agent = machine->startAgent(*client, "fail");
    CHECK(tell(*client, "set") == NotAuthorized);
    CHECK(dialogCount(*agent) == 2);
    CHECK(tell(*client, "ask") == "-60005");
    CHECK(tell(*client, "get") == "ok");
}

TEST_CASE("on a system bus nobody to ask, or an agent that crashes, grants nothing")
{
    PrivateMachine* machine = PrivateMachine::shared();
    if (!machine)
        return;
    const auto client = machine->startClient();
    CHECK(tell(*client, "silent") == "-60007");
    CHECK(tell(*client, "ask") == "-60005");
    CHECK(tell(*client, "set") == NotAuthorized);
    const auto agent = machine->startAgent(*client, "crash");
    CHECK(tell(*client, "set") == NotAuthorized);
    CHECK(dialogCount(*agent) == 1);
}

TEST_CASE("on a system bus a grant is of no use to another process, be it of the same user")
{
    PrivateMachine* machine = PrivateMachine::shared();
    if (!machine)
        return;
    const auto client = machine->startClient();
    const auto agent = machine->startAgent(*client, "yes");
    REQUIRE(tell(*client, "set") == "ok");
    const std::string granted = tell(*client, "name");
    for (const unsigned user : {PrivateMachine::PlainUser, PrivateMachine::OtherUser}) {
        const auto thief = machine->startClient(user);
        CHECK(tell(*thief, "silent") == "-60007");
        CHECK(tell(*thief, "set") == NotAuthorized);
        // The token that works for its owner, and the thief's own.
        CHECK(tell(*thief, "token " + granted) == "com.zerkolin.authorization 3");
        CHECK(tell(*thief, "token " + tell(*thief, "name")) == "com.zerkolin.authorization 5");
        const auto thiefsAgent = machine->startAgent(*thief, "yes", user);
        CHECK(tell(*thief, "set") == "ok");
        CHECK(dialogCount(*thiefsAgent) == 1);
    }
    CHECK(tell(*client, "token " + granted) == "ok");
    CHECK(dialogCount(*agent) == 1);
}

TEST_CASE("on a system bus an authority killed during the dialog denies, and the next question starts it again")
{
    PrivateMachine* machine = PrivateMachine::shared();
    if (!machine)
        return;
    const auto client = machine->startClient();
    {
        const auto agent = machine->startAgent(*client, "hang");
        client->write("ask\n");
        REQUIRE(agent->readLine() == Prompt);
        kill(machine->ownerOf(Authority), SIGKILL);
        CHECK(client->readLine() == "-60008");
    }
    const auto agent = machine->startAgent(*client, "yes");
    CHECK(tell(*client, "set") == "ok");
}

TEST_CASE("on a system bus the token of a destroyed authorization is worth nothing")
{
    PrivateMachine* machine = PrivateMachine::shared();
    if (!machine)
        return;
    const auto client = machine->startClient();
    const auto agent = machine->startAgent(*client, "yes");
    REQUIRE(tell(*client, "set") == "ok");
    const std::string before = tell(*client, "name");
    CHECK(tell(*client, "token " + before) == "ok");
    CHECK(tell(*client, "invalidate") == "ok");
    CHECK(tell(*client, "name") != before);
    CHECK(tell(*client, "token " + before) == "com.zerkolin.authorization 3");
    // Without a login session polkit refuses to revoke a grant, so this process may still be trusted without a dialog.
    CHECK(tell(*client, "set") == "ok");
}

TEST_CASE(
    "on a system bus administrators change settings without a password while that is allowed, and nobody else does")
{
    PrivateMachine* machine = PrivateMachine::shared();
    if (!machine)
        return;
    // The authority reads its rules again in its own time; each client is a process without a grant.
    const auto isAnswered = [&](unsigned user, const std::string& answer) {
        for (int attempt = 0; attempt < 100; ++attempt) {
            if (tell(*machine->startClient(user), "silent") == answer)
                return true;
            std::this_thread::sleep_for(std::chrono::milliseconds(100));
        }
        return false;
    };
    const auto client = machine->startClient(PrivateMachine::Administrator);
    CHECK(tell(*client, "allow 1") == NotAuthorized);
    const auto agent = machine->startAgent(*client, "yes", PrivateMachine::Administrator);
    REQUIRE(tell(*client, "allow 1") == "ok");
    CHECK(isAnswered(PrivateMachine::Administrator, "0"));
    CHECK(isAnswered(PrivateMachine::PlainUser, "-60007"));
    const auto second = machine->startClient(PrivateMachine::Administrator);
    CHECK(tell(*second, "set") == "ok");
    CHECK(tell(*second, "allow 0") == "ok");
    CHECK(isAnswered(PrivateMachine::Administrator, "-60007"));
}
