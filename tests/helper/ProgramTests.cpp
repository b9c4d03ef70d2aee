#include "diagnostics/log/ZRKQueue.h"
#include "messaging/BRVHelperMessager.h"
#include "messaging/ZRKAuthorizationManager.h"
#include "messaging/ZRKError.h"
#include "platform/Authorization.h"
#include "protocol/ErrorCodes.h"
#include "protocol/ScheduleRanges.h"
#include "tests/helper/RunningHelper.h"
#include "tests/helper/SettingsRecords.h"
#include "tests/support/BusOwner.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <future>
#include <random>
#include <sysexits.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

using Answer = PolkitAuthority::Answer;
using platform::Data;
using platform::Dictionary;
using platform::PropertyList;
using platform::ServiceDictionary;
using platform::ServiceError;
using platform::ServiceReply;

namespace {

const Dictionary& newSettings()
{
    static const auto settings = intervalSettings({{"Minutes", 90}});
    return settings;
}

ServiceDictionary applyRequest(const Dictionary& settings)
{
    return {{"message", BRVMessageApplySettings}, {"auth", ownToken()}, {"payload", binaryData(settings)}};
}

std::future<ServiceReply> sendLater(RunningHelper& helper, const ServiceDictionary& message)
{
    auto promise = std::make_shared<std::promise<ServiceReply>>();
    helper.client().sendXPCMessage(message, platform::Queue::global(),
                                   [promise](ServiceReply reply) { promise->set_value(std::move(reply)); });
    return promise->get_future();
}

bool isReady(std::future<ServiceReply>& reply)
{
    return reply.wait_for(std::chrono::milliseconds(50)) == std::future_status::ready;
}

void checkError(const ServiceReply& reply, const char* domain, std::int64_t code, const Dictionary& userInfo)
{
    auto error = errorIn(reply);
    CHECK(error.domain == domain);
    CHECK(error.code == code);
    CHECK(error.userInfo == userInfo);
}

PropertyList servedSettings(RunningHelper& helper)
{
    return resultIn(helper.send({{"message", BRVMessageGetSettings}}));
}

} // namespace

TEST_CASE("a fresh helper serves the defaults, and automatic updates that are off")
{
    RunningHelper helper;
    CHECK(servedSettings(helper) == PropertyList(defaultScheduleSettings()));
    CHECK(resultIn(helper.send({{"message", BRVMessageGetAutoUpdates}}))
          == PropertyList(Dictionary{{"Enabled", false}}));
    CHECK_FALSE(helper.storedSettings());
    CHECK(helper.authority().calls().empty());
}

TEST_CASE("settings that the application applies are stored and served, and the user is asked once")
{
    RunningHelper helper;
    auto messager = BRVHelperMessager::create();
    auto reply = messager->sendSynchronousMessage(BRVMessageApplySettings, PropertyList(newSettings()));
    REQUIRE(reply.has_value());
    CHECK_FALSE(reply->dictionary()->empty());
    CHECK(helper.storedSettings() == PropertyList(newSettings()));
    CHECK(messager->sendSynchronousMessage(BRVMessageGetSettings) == PropertyList(newSettings()));

    REQUIRE(messager->sendSynchronousMessage(BRVMessageSetAutoUpdates, Dictionary{{"Enabled", true}}).has_value());
    CHECK(messager->sendSynchronousMessage(BRVMessageGetAutoUpdates) == PropertyList(Dictionary{{"Enabled", true}}));
    auto questions = helper.authority().calls();
    CHECK(std::ranges::count_if(questions, [](const auto& call) { return call.flags == 0; }) == 2);
    CHECK(helper.log().contains("Applied settings: backups 0, mode Interval, snapshots 0."));
    ZRKAuthorizationManager::sharedManager().invalidate();
}

TEST_CASE("what was applied is there after a kill and a restart")
{
    RunningHelper helper(Answer::Authorized);
    Dictionary settings;
    for (int minutes = 61; minutes < 81; ++minutes) {
        settings = intervalSettings({{"Minutes", minutes}});
        REQUIRE(resultIn(helper.send(applyRequest(settings))).dictionary());
        helper.program().kill();
        REQUIRE(helper.storedSettings() == PropertyList(settings));
        helper.start();
        REQUIRE(servedSettings(helper) == PropertyList(settings));
    }
}

TEST_CASE("a kill at any moment of a change leaves the old or the new settings")
{
    RunningHelper helper(Answer::Authorized);
    std::mt19937 random(20'261'123);
    std::uniform_int_distribution<int> microseconds(0, 6'000);
    PropertyList before(defaultScheduleSettings());
    for (int minutes = 101; minutes < 131; ++minutes) {
        PropertyList after(intervalSettings({{"Minutes", minutes}}));
        auto reply = sendLater(helper, applyRequest(*after.dictionary()));
        std::this_thread::sleep_for(std::chrono::microseconds(microseconds(random)));
        helper.program().kill();
        bool accepted = reply.get().has_value();
        helper.start();
        auto served = servedSettings(helper);
        CHECK((served == after || (served == before && !accepted)));
        before = served;
    }
}

TEST_CASE("a change that waits for the authority when the helper is killed is interrupted and not made")
{
    RunningHelper helper(Answer::Hang);
    auto reply = sendLater(helper, applyRequest(newSettings()));
    REQUIRE(helper.authority().waitForCalls(1).size() == 1);
    helper.program().kill();
    CHECK(reply.get() == std::unexpected(ServiceError::Interrupted));
    helper.start();
    CHECK(servedSettings(helper) == PropertyList(defaultScheduleSettings()));
}

TEST_CASE("without the user's consent nothing is changed")
{
    RunningHelper helper(Answer::Dismissed);
    auto messager = BRVHelperMessager::create();
    auto reply = messager->sendSynchronousMessage(BRVMessageApplySettings, PropertyList(newSettings()));
    REQUIRE_FALSE(reply.has_value());
    CHECK(userCanceledAuthentication(reply.error()));

    // An application that does not ask, or does not listen to the answer.
    struct Row {
        Answer answer;
        int status;
    };
    for (auto [answer, status] :
         {Row{Answer::Dismissed, -60007}, Row{Answer::Denied, -60005}, Row{Answer::Challenge, -60007},
          Row{Answer::Unknown, -60005}, Row{Answer::KeptGrant, -60007}}) {
        helper.answerEverything(answer);
        auto text = [&](const char* right) { return right + (" (" + std::to_string(status) + ")"); };
        checkError(helper.send(applyRequest(newSettings())), ZRKAuthorizationErrorDomain,
                   ZRKAuthorizationErrorValidateRights,
                   {{"rights", platform::Array{text(BRVRightModifySettings1), text(BRVRightModifySettings2)}}});
    }
    CHECK_FALSE(helper.storedSettings());
}

TEST_CASE("either right of the pair is enough")
{
    RunningHelper helper(Answer::Denied);
    helper.authority().setAnswer(BRVRightModifySettings2, Answer::Authorized);
    CHECK(resultIn(helper.send(applyRequest(newSettings()))).dictionary());
    CHECK(helper.storedSettings() == PropertyList(newSettings()));
}

TEST_CASE("a token that does not stand for its sender is refused although the authority would allow anything")
{
    RunningHelper helper(Answer::Authorized);
    auto own = ownToken();
    auto trailing = own;
    trailing.back() = 'x';
    auto name = std::string(own.begin(), std::ranges::find(own, 0));

    std::vector<std::pair<const char*, Data>> tokens{
        {"the authority's, which was the first on the bus", tokenOf(":1.0")},
        {"nobody's", tokenOf(":1.4000000")},
        {"the helper's name", tokenOf("com.zerkolin.brevane.schedul")},
        {"the bus's", tokenOf("org.freedesktop.DBus")},
        {"zeros", Data(32)},
        {"noise", Data(32, 0xa5)},
        {"its own with more after it", trailing},
        {"its own and a digit", tokenOf(name + "0")},
        {"its own without the last digit", tokenOf(name.substr(0, name.size() - 1))},
        {"short", Data(own.begin(), own.end() - 1)},
        {"long",
         [&] {
             auto token = own;
             token.push_back(0);
             return token;
         }()},
        {"empty", Data()},
    };
    for (const auto& [kind, token] : tokens) {
        CAPTURE(kind);
        auto request = applyRequest(newSettings());
        request["auth"] = token;
        checkError(helper.send(request), ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorCreateFromExternalForm,
                   {{"status", platform::Authorization::InternalizeNotAllowed}});
    }
    CHECK(helper.authority().calls().empty());
    CHECK_FALSE(helper.storedSettings());
}

TEST_CASE("a token that was good is worth nothing on a later connection")
{
    RunningHelper helper(Answer::Authorized);
    auto request = applyRequest(newSettings());
    REQUIRE(resultIn(helper.send(request)).dictionary());
    // Destroying the rights also ends the connection that held them.
    auto authorization = platform::Authorization::create();
    REQUIRE(authorization.has_value());
    REQUIRE((*authorization)->makeExternalForm().has_value());
    (*authorization)->free(platform::Authorization::DestroyRights);
    helper.client().cancel();
    REQUIRE(ownToken() != std::get<Data>(request["auth"]));
    CHECK(errorIn(helper.send(request)).code == ZRKAuthorizationErrorCreateFromExternalForm);
}

TEST_CASE("every number asks for its rights first, and twelve are served")
{
    RunningHelper helper(Answer::Authorized);
    for (std::int64_t number = 0; number <= 28; ++number) {
        CAPTURE(number);
        auto rights = BRVAuthorizationRightsForMessage(number);
        REQUIRE(rights);
        if (!rights->empty())
            checkError(helper.send({{"message", number}}), ZRKMessagerErrorDomain, ZRKMessagerErrorMissingAuthorization,
                       {{"message", number}});
        auto asked = helper.authority().calls().size();
        auto reply = helper.send({{"message", number}, {"auth", ownToken()}});
        if (number == BRVMessageGetSettings || number == BRVMessageGetAutoUpdates || number == BRVMessageGetStatus
            || number == BRVMessageGetBackupProgram)
            CHECK(resultIn(reply).dictionary());
        else if (number == BRVMessageStartBackup) // no program is chosen
            CHECK(errorIn(reply).code == BRVErrorMissingValue);
        else if (number == BRVMessageCheckForUpdates) // there is no feed
            CHECK(errorIn(reply).code == ZRKUpdaterErrorFetchInfo);
        else if (number == BRVMessageInstallUpdate) // nor an installation
            CHECK(errorIn(reply).code == ZRKUpdaterErrorCannotUpdateNow);
        else if (number == BRVMessageUninstall)
            CHECK(errorIn(reply).code == ENOENT);
        else // those that are served miss their payload
            checkError(reply, ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, {{"message", number}});
        auto questions = helper.authority().calls();
        CHECK(questions.size() - asked == (rights->empty() ? 0 : 1));
        if (!rights->empty())
            CHECK(questions.back().action == rights->front());
    }
}

TEST_CASE("a number outside the protocol is an error, and nobody is asked about it")
{
    RunningHelper helper(Answer::Authorized);
    for (std::int64_t number : {std::int64_t(-1), std::int64_t(29), INT64_MIN, INT64_MAX})
        checkError(helper.send({{"message", number}, {"auth", ownToken()}}), ZRKMessagerErrorDomain,
                   ZRKMessagerErrorDeserializeMessage, {{"message", number}});
    checkError(helper.send({}), ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, {});
    CHECK(helper.authority().calls().empty());
}

TEST_CASE("a payload that is no record is refused")
{
    RunningHelper helper(Answer::Authorized);
    for (const auto& payload : {Data(), Data(100, 0xff), binaryData(platform::Array{1}), binaryData("text")}) {
        for (auto number : {BRVMessageApplySettings, BRVMessageSetAutoUpdates}) {
            auto error = errorIn(helper.send({{"message", number}, {"auth", ownToken()}, {"payload", payload}}));
            CHECK(error.domain == ZRKMessagerErrorDomain);
            CHECK(error.code == ZRKMessagerErrorDeserializeMessage);
            CHECK(error.userInfo.integerForKey("message") == number);
        }
    }
    CHECK_FALSE(helper.storedSettings());
}

TEST_CASE("a record that cannot be enforced is refused with the key that is wrong")
{
    RunningHelper helper(Answer::Authorized);
    checkError(helper.send(applyRequest(settingsWithout("Suspend"))), BRVErrorDomain, BRVErrorMissingValue,
               {{"key", "Suspend"}});
    checkError(helper.send(applyRequest(settingsWith("Snapshots", "yes"))), BRVErrorDomain, BRVErrorWrongType,
               {{"key", "Snapshots"}, {"expected", "boolean"}});
    checkError(helper.send(applyRequest(settingsWith("Speed", 3))), BRVErrorDomain, BRVErrorUnknownKey,
               {{"key", "Speed"}});
    checkError(
        helper.send(
            {{"message", BRVMessageSetAutoUpdates}, {"auth", ownToken()}, {"payload", binaryData(Dictionary())}}),
        BRVErrorDomain, BRVErrorMissingValue, {{"key", "Enabled"}});
    CHECK_FALSE(helper.storedSettings());
}

TEST_CASE("an authority that does not answer holds up no message that needs no right")
{
    RunningHelper helper(Answer::Hang);
    auto change = sendLater(helper, applyRequest(newSettings()));
    REQUIRE(helper.authority().waitForCalls(1).size() == 1);
    CHECK(servedSettings(helper) == PropertyList(defaultScheduleSettings()));
    CHECK(resultIn(helper.send({{"message", BRVMessageGetAutoUpdates}})).dictionary());
    CHECK_FALSE(isReady(change));

    helper.answerEverything(Answer::Authorized);
    CHECK(resultIn(change.get()).dictionary());
    CHECK(servedSettings(helper) == PropertyList(newSettings()));
}

TEST_CASE("a thousand reads, a hundred at a time, are all answered")
{
    RunningHelper helper;
    // A bus lets a connection wait for 128 replies.
    constexpr int threadCount = 10;
    constexpr int roundCount = 10;
    constexpr int readsAtOnce = 10;
    std::atomic<int> good = 0;
    std::vector<std::thread> threads;
    for (int index = 0; index < threadCount; ++index) {
        threads.emplace_back([&] {
            for (int round = 0; round < roundCount; ++round) {
                std::vector<std::future<ServiceReply>> replies;
                for (int read = 0; read < readsAtOnce; ++read)
                    replies.push_back(sendLater(helper, {{"message", BRVMessageGetSettings}}));
                for (auto& reply : replies) {
                    auto received = reply.get();
                    good += received.has_value() && received->contains("payload");
                }
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    CHECK(good.load() == threadCount * roundCount * readsAtOnce);
}

TEST_CASE("reads and changes at the same time always show whole settings")
{
    RunningHelper helper(Answer::Authorized);
    PropertyList first(intervalSettings({{"Hours", 5}}));
    PropertyList second(calendarSettings({Dictionary{{"Weekday", 7}, {"Hour", 9}, {"Minute", 30}}}));
    REQUIRE(resultIn(helper.send(applyRequest(*first.dictionary()))).dictionary());
    auto requests = std::vector{applyRequest(*second.dictionary()), applyRequest(*first.dictionary())};
    std::thread writer([&] {
        for (int round = 0; round < 50; ++round)
            helper.send(requests[static_cast<std::size_t>(round % 2)]);
    });
    int whole = 0;
    for (int round = 0; round < 200; ++round) {
        auto served = servedSettings(helper);
        whole += served == first || served == second;
    }
    writer.join();
    CHECK(whole == 200);
}

TEST_CASE("a one-way change is made")
{
    RunningHelper helper(Answer::Authorized);
    helper.client().sendXPCMessage(applyRequest(newSettings()));
    auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!helper.storedSettings() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    CHECK(helper.storedSettings() == PropertyList(newSettings()));
}

TEST_CASE("the rights are defined at the first start, and a definition that is there is left alone")
{
    RunningHelper helper;
    Dictionary asksForPassword{{"rule", platform::Array{"authenticate-admin"}}};
    for (const auto* right : {BRVRightModifySettings1, BRVRightModifySettings2, BRVRightUninstall})
        CHECK(platform::Authorization::right(right) == asksForPassword);
    Dictionary other{{"rule", platform::Array{"is-admin"}}};
    REQUIRE(ZRKAuthorizationManager::setAuthorizationRights({{BRVRightModifySettings1, other}}).has_value());
    helper.program().kill();
    helper.start();
    CHECK(platform::Authorization::right(BRVRightModifySettings1) == other);
    CHECK(platform::Authorization::right(BRVRightModifySettings2) == asksForPassword);
}

TEST_CASE("the helper stops when it is told to, also while the authority does not answer")
{
    RunningHelper helper(Answer::Hang);
    for (int number : {SIGTERM, SIGINT}) {
        auto calls = helper.authority().calls().size();
        auto change = sendLater(helper, applyRequest(newSettings()));
        REQUIRE(helper.authority().waitForCalls(calls + 1).size() == calls + 1);
        helper.program().signal(number);
        CHECK(helper.program().wait() == 0);
        CHECK_FALSE(change.get().has_value());
        helper.start();
    }
    helper.program().signal(SIGTERM);
    CHECK(helper.program().wait() == 0);
    CHECK(helper.log().contains("Stopped."));
    CHECK_FALSE(helper.storedSettings());
}

TEST_CASE("a second helper ends at once and leaves the first one alone")
{
    RunningHelper helper;
    CHECK(ChildProcess({BREVANE_SCHEDULER_HELPER, "--root", helper.root()}).wait() == EX_UNAVAILABLE);
    CHECK(servedSettings(helper).dictionary());
}

TEST_CASE("the helper ends when its bus is gone, and does not start without one")
{
    RunningHelper helper;
    helper.bus().kill();
    CHECK(helper.program().wait() == EX_UNAVAILABLE);
    CHECK(ChildProcess({BREVANE_SCHEDULER_HELPER, "--root", helper.root()}).wait() == EX_UNAVAILABLE);
}

TEST_CASE("the helper refuses arguments that it does not know")
{
    CHECK(ChildProcess({BREVANE_SCHEDULER_HELPER, "--root"}).wait() == EX_USAGE);
    CHECK(ChildProcess({BREVANE_SCHEDULER_HELPER, "--root", ""}).wait() == EX_USAGE);
    CHECK(ChildProcess({BREVANE_SCHEDULER_HELPER, "/tmp"}).wait() == EX_USAGE);
}

TEST_CASE("the helper says how it is used, every option of it")
{
    ChildProcess help({BREVANE_SCHEDULER_HELPER, "--help"});
    const auto usage = help.readAll();
    CHECK(usage.starts_with("usage: "));
    for (const char* option : {"--root PATH", "--updates FILE", "--rules FOLDER", "--snapshot VOLUME"})
        CHECK_MESSAGE(usage.contains(std::string("\n  ") + option + " "), option);
    for (const char* option : {"--remove-snapshot PATH", "--download URL SIZE SECONDS SILENCE"})
        CHECK_MESSAGE(usage.contains(std::string("\n  ") + option + "\n"), option);
    for (const char* option : {"--simulate FILE", "--self-check", "--take-back"})
        CHECK_MESSAGE(usage.contains(std::string("\n  ") + option + " "), option);
    CHECK(help.wait() == 0);
}

TEST_CASE("a stored file that is damaged is kept and told in the log, and the helper serves the defaults")
{
    RunningHelper helper(Answer::Authorized);
    REQUIRE(resultIn(helper.send(applyRequest(newSettings()))).dictionary());
    helper.program().kill();
    REQUIRE(::truncate(helper.settingsPath().c_str(), 40) == 0);
    helper.start();
    CHECK(servedSettings(helper) == PropertyList(defaultScheduleSettings()));
    CHECK(::access((helper.settingsPath() + ".damaged").c_str(), F_OK) == 0);
    CHECK(helper.log().contains("is damaged. It is kept as"));
}

TEST_CASE("on a full disk a change is refused with the system's error, and the old settings stay")
{
    const std::vector<std::string> unshare =
        ::geteuid() == 0 ? std::vector<std::string>{"unshare", "-m"} : std::vector<std::string>{"unshare", "-Urm"};
    auto mount = unshare;
    mount.insert(mount.end(), {"mount", "-t", "tmpfs", "-o", "size=64k", "none", "/mnt"});
    if (ChildProcess(mount).wait() != 0) {
        MESSAGE("SKIPPED: a small disk cannot be mounted here");
        return;
    }
    RunningHelper helper(Answer::Authorized);
    helper.program().kill();
    auto folder = helper.root() + "/Library/Preferences";
    auto command = unshare;
    command.insert(command.end(), {"sh", "-c", "mount -t tmpfs -o size=64k none \"$0\" && exec \"$@\"", folder});
    helper.start(command);
    PropertyList old(intervalSettings({{"Hours", 3}}));
    REQUIRE(resultIn(helper.send(applyRequest(*old.dictionary()))).dictionary());

    auto filler = "/proc/" + std::to_string(helper.program().pid()) + "/root" + folder + "/filler";
    auto file = ::open(filler.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    REQUIRE(file >= 0);
    const std::vector<char> block(512);
    while (::write(file, block.data(), block.size()) > 0) { }
    ::close(file);
    auto error = errorIn(helper.send(applyRequest(newSettings())));
    CHECK(error.domain == platform::POSIXErrorDomain);
    CHECK(error.code == ENOSPC);
    CHECK(platform::localizedDescription(error) == "The settings could not be saved. No space left on device.");
    CHECK(servedSettings(helper) == old);
    REQUIRE(::unlink(filler.c_str()) == 0);
    CHECK(resultIn(helper.send(applyRequest(newSettings()))).dictionary());
}

TEST_CASE("a message that has no payload is answered whatever comes as one")
{
    RunningHelper helper(Answer::Authorized);
    for (const auto& payload : {Data(100, 0xff), Data(4'000'000, 0x62), Data()})
        for (auto number : {BRVMessageGetSettings, BRVMessageGetAutoUpdates})
            CHECK(resultIn(helper.send({{"message", number}, {"payload", payload}})).dictionary());
}

TEST_CASE("a payload is not read before its sender may send it")
{
    RunningHelper helper(Answer::Denied);
    const ServiceDictionary damaged{{"message", 2}, {"auth", ownToken()}, {"payload", Data(100, 0xff)}};
    CHECK(errorIn(helper.send(damaged)).code == ZRKAuthorizationErrorValidateRights);
    helper.answerEverything(Answer::Authorized);
    CHECK(errorIn(helper.send(damaged)).code == ZRKMessagerErrorDeserializeMessage);
}

TEST_CASE("a payload above 4 MB is refused, and nobody is asked about it")
{
    RunningHelper helper(Answer::Authorized);
    checkError(helper.send({{"message", 2}, {"auth", ownToken()}, {"payload", Data((std::size_t(4) << 20) + 1)}}),
               ZRKMessagerErrorDomain, ZRKMessagerErrorDeserializeMessage, {{"message", 2}});
    CHECK(helper.authority().calls().empty());
}

TEST_CASE("what waits when the bus is lost is not decided by the next one")
{
    RunningHelper helper(Answer::Hang);
    for (int count = 0; count < 20; ++count)
        helper.client().sendXPCMessage(applyRequest(newSettings()));
    REQUIRE(helper.authority().waitForCalls(1).size() == 1);
    helper.bus().kill();
    helper.bus().restart();
    PolkitAuthority generous;
    for (const auto* right : {BRVRightModifySettings1, BRVRightModifySettings2})
        generous.setAnswer(right, Answer::Authorized);
    CHECK(helper.program().wait() == EX_UNAVAILABLE);
    CHECK(generous.calls().empty());
    CHECK_FALSE(helper.storedSettings());
}

TEST_CASE("the log says for whom a change was made")
{
    RunningHelper helper(Answer::Authorized);
    REQUIRE(resultIn(helper.send(applyRequest(newSettings()))).dictionary());
    helper.program().signal(SIGTERM);
    CHECK(helper.program().wait() == 0);
    CHECK(helper.log().contains("Did message 2 for user " + std::to_string(::getuid()) + ", '"));
    CHECK(helper.log().contains(std::string(program_invocation_short_name) + "' (process " + std::to_string(::getpid())
                                + ")."));
}

TEST_CASE("what a sender may do, but a service refuses, is a refusal in the log too")
{
    RunningHelper helper(Answer::Authorized);
    CHECK(errorIn(helper.send(applyRequest(settingsWith("Speed", 3)))).code == BRVErrorUnknownKey);
    CHECK(errorIn(helper.send(applyRequest(settingsWithout("Suspend")))).code == BRVErrorMissingValue);
    // The line is written after the reply, by another thread.
    const auto line = "Refused message 2 of user " + std::to_string(::getuid()) + ", '";
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
    while (!helper.log().contains(line) && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    CHECK(helper.log().contains(line));
    CHECK_FALSE(helper.log().contains("Did message 2"));
}

TEST_CASE("the refusals of one user are counted in one line")
{
    RunningHelper helper(Answer::Denied);
    for (int count = 0; count < 300; ++count)
        CHECK(errorIn(helper.send(applyRequest(newSettings()))).code == ZRKAuthorizationErrorValidateRights);
    helper.program().signal(SIGTERM);
    CHECK(helper.program().wait() == 0);
    const auto log = helper.log();
    const auto user = "user " + std::to_string(::getuid());
    CHECK(log.contains("Refused message 2 of " + user + ", '"));
    CHECK(log.contains("Refused 299 more messages of " + user + ", the last of '"));
    CHECK(std::ranges::count(log, '\n') < 10);
}

TEST_CASE("a key of any length makes neither a long reply nor a long line of the log")
{
    RunningHelper helper(Answer::Authorized);
    const auto error = errorIn(helper.send(applyRequest(settingsWith(std::string(1'000'000, 'k'), 1))));
    CHECK(error.code == BRVErrorUnknownKey);
    CHECK(error.userInfo.stringForKey("key")->size() < 300);
    CHECK(helper.log().size() < 16'384);
}

TEST_CASE("a termination that comes before the helper listens is not lost")
{
    RunningHelper helper;
    helper.program().kill();
    ChildProcess next({"/usr/bin/python3", "-c",
                       "import os, signal, sys; signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGTERM}); "
                       "os.kill(os.getpid(), signal.SIGTERM); os.execv(sys.argv[1], sys.argv[1:])",
                       BREVANE_SCHEDULER_HELPER, "--root", helper.root()});
    CHECK(next.wait() == 0);
}

TEST_CASE("the request right after a failure reaches the helper, before the failure was heard of")
{
    RunningHelper helper;
    helper.program().kill();
    ZRKXPCClient client(BRVSchedulerServiceName);
    std::promise<void> heard;
    ZRKQueueMain()->async([wait = heard.get_future().share()] { wait.wait(); });
    CHECK(client.sendSynchronousXPCMessage({{"message", 1}}) == std::unexpected(ServiceError::Invalid));
    ChildProcess next({BREVANE_SCHEDULER_HELPER, "--root", helper.root()});
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (ownerOfBusName(BRVSchedulerServiceName) != next.pid() && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    CHECK(client.sendSynchronousXPCMessage({{"message", 1}}).has_value());
    heard.set_value();
}

TEST_CASE("whether a password is needed is said in plain words")
{
    RunningHelper helper(Answer::Authorized);
    for (bool allowed : {true, false})
        REQUIRE(resultIn(helper.send({{"message", BRVMessageSetAllowWithoutPassword},
                                      {"auth", ownToken()},
                                      {"payload", binaryData(Dictionary{{"Allow", allowed}})}}))
                    .dictionary());
    CHECK(helper.log().contains("Changing settings needs no password."));
    CHECK(helper.log().contains("Changing settings needs a password."));
}

TEST_CASE("whether updates come by themselves, and which program backs up, is said in plain words")
{
    RunningHelper helper(Answer::Authorized);
    for (bool enabled : {true, false})
        REQUIRE(resultIn(helper.send({{"message", BRVMessageSetAutoUpdates},
                                      {"auth", ownToken()},
                                      {"payload", binaryData(Dictionary{{"Enabled", enabled}})}}))
                    .dictionary());
    for (const auto& choice : {Dictionary{{"Program", "btrbk"}}, Dictionary()})
        REQUIRE(resultIn(helper.send({{"message", BRVMessageSetBackupProgram},
                                      {"auth", ownToken()},
                                      {"payload", binaryData(choice)}}))
                    .dictionary());
    const auto log = helper.log();
    std::size_t at = 0;
    for (const char* text : {"Automatic updates are on.\n", "Automatic updates are off.\n",
                             "The backup program is now btrbk.\n", "The backup program is now none.\n"}) {
        at = log.find(text, at);
        CHECK_MESSAGE(at != std::string::npos, text);
    }
}
