#include "messaging/BRVHelperMessager.h"
#include "platform/linux/system/bus/BusHandles.h"
#include "protocol/ErrorCodes.h"
#include "tests/update-integration/UpdateMachine.h"

#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <thread>
#include <unistd.h>
#include <vector>

using platform::Array;
using platform::Dictionary;
using platform::PropertyList;
using Transport = UpdateMachine::Transport;

namespace {

Dictionary feedOf(const std::string& version)
{
    return {{"Version", version}, {"HumanVersion", "Version " + version}, {"Package", "Brevane.pkg"}};
}

Dictionary feedWith(const char* key, PropertyList value)
{
    auto feed = feedOf("2.0");
    feed.set(key, std::move(value));
    return feed;
}

Dictionary feedWithout(const char* key)
{
    auto feed = feedOf("2.0");
    feed.remove(key);
    return feed;
}

platform::ServiceReply check(UpdateMachine& machine)
{
    return machine.send(BRVMessageCheckForUpdates);
}

// The server's trickle was not taken to its end.
bool isGivenUp(const UpdateMachine& machine)
{
    return access(machine.served("update.plist.left").c_str(), F_OK) == 0;
}

// Another program, with a connection of its own, that asks for updates.
class Asker {
public:
    Asker()
    {
        sd_bus* bus = nullptr;
        REQUIRE(sd_bus_open_system(&bus) >= 0);
        _bus.reset(bus);
    }

    // Whether there was an answer.
    bool ask() { return sd_bus_call(_bus.get(), question().get(), 0, nullptr, nullptr) >= 0; }
    // Does not wait for the answer.
    void begin()
    {
        std::uint64_t cookie = 0;
        sd_bus_send(_bus.get(), question().get(), &cookie);
        sd_bus_flush(_bus.get());
    }
    // Wants none.
    void tell() { sd_bus_send(_bus.get(), question().get(), nullptr); }

private:
    platform::BusMessage question() const
    {
        sd_bus_message* message = nullptr;
        const char* name = "com.zerkolin.brevane.scheduler";
        sd_bus_message_new_method_call(_bus.get(), &message, name, "/com/zerkolin/brevane/scheduler", name, "Send");
        sd_bus_message_append(message, "a{sv}", 1, "message", "x", std::int64_t(BRVMessageCheckForUpdates));
        return platform::BusMessage(message);
    }

    platform::BusHandle _bus;
};

} // namespace

TEST_CASE("a check tells of a newer version, with its address when the feed has one")
{
    UpdateMachine machine;
    machine.start();
    machine.serveFeed(feedOf("1.0.1"));
    CHECK(recordIn(check(machine)) == Dictionary{{"Version", "1.0.1"}, {"HumanVersion", "Version 1.0.1"}});
    machine.serveFeed(feedWith("URL", "https://example.invalid/Brevane.pkg"));
    CHECK(recordIn(check(machine))
          == Dictionary{
              {"Version", "2.0"}, {"HumanVersion", "Version 2.0"}, {"URL", "https://example.invalid/Brevane.pkg"}});
    machine.serveFeed(feedWith("URL", "HTTP://example.invalid"));
    CHECK(*recordIn(check(machine)).stringForKey("URL") == "HTTP://example.invalid");
    CHECK(machine.authority().calls().empty());
}

TEST_CASE("the same version and an older one are up to date")
{
    UpdateMachine machine;
    machine.start();
    for (const char* version : {"1.0", "1", "1.0.0.0", "0.9.9", "0"}) {
        machine.serveFeed(feedOf(version));
        checkError(check(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate);
    }
}

TEST_CASE("a server's status is told, and too many requests have an error of their own")
{
    UpdateMachine machine;
    machine.start();
    machine.serveFeed(feedOf("2.0"));
    for (std::int64_t status : {400, 403, 404, 410, 500, 503}) {
        machine.answer("update.plist", "status " + std::to_string(status));
        auto error = errorIn(check(machine));
        CHECK(error.domain == ZRKUpdaterErrorDomain);
        CHECK(error.code == ZRKUpdaterErrorFetchInfo);
        CHECK(error.userInfo == Dictionary{{"status-code", status}});
    }
    machine.answer("update.plist", "status 429");
    checkError(check(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorTooManyRequests);
    machine.serveAgain("update.plist");
    CHECK(recordIn(check(machine)).contains("Version"));
}

TEST_CASE("what is no property list, or endless, is data that could not be read")
{
    UpdateMachine machine;
    machine.start();
    for (const auto& content : {std::string("<html>"), std::string("bplist00"), std::string("{ a = "),
                                std::string(9, '\0'), std::string((1 << 20) + 1, ' ')}) {
        machine.serve("update.plist", content);
        checkError(check(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorReadData);
    }
    machine.answer("update.plist", "endless");
    checkError(check(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorReadData);
}

TEST_CASE("a feed may be as large as a megabyte, and no byte larger")
{
    UpdateMachine machine;
    machine.start();
    const auto feedOfSize = [](std::size_t size) {
        std::string text = "{ Version = \"2.0\"; HumanVersion = \"Two\"; Package = \"Brevane.pkg\"; }";
        text.resize(size, ' ');
        return text;
    };
    machine.serve("update.plist", feedOfSize(1 << 20));
    CHECK(recordIn(check(machine)).contains("HumanVersion"));
    machine.serve("update.plist", feedOfSize((1 << 20) + 1));
    checkError(check(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorReadData);
}

TEST_CASE("a feed that says too little, or nonsense, is invalid and told")
{
    UpdateMachine machine;
    machine.start();
    const std::vector<Dictionary> feeds{
        Dictionary(),
        feedWithout("Version"),
        feedWithout("HumanVersion"),
        feedWithout("Package"),
        feedWith("Version", "new"),
        feedWith("Version", "1..2"),
        feedWith("Version", "1.2."),
        feedWith("Version", "-1"),
        feedWith("Version", 2),
        feedWith("HumanVersion", ""),
        feedWith("HumanVersion", std::string(3000, 'x')),
        feedWith("Package", "file:///etc/passwd"),
        feedWith("Package", "ftp://127.0.0.1/Brevane.pkg"),
        feedWith("URL", 1),
        feedWith("URL", ""),
        feedWith("URL", "Brevane.pkg"),
        feedWith("URL", "//example.invalid/Brevane.pkg"),
        feedWith("URL", "file:///etc/passwd"),
        feedWith("URL", "ftp://example.invalid/Brevane.pkg"),
        feedWith("URL", "javascript:alert(1)"),
        feedWith("URL", "smb://example.invalid/share"),
        feedWith("URL", "settings:"),
        feedWith("Size", -1),
        feedWith("Size", std::int64_t(1) << 40),
        feedWith("Share", 101),
        feedWith("Share", "all"),
    };
    for (const auto& feed : feeds) {
        machine.serveFeed(feed);
        auto error = errorIn(check(machine));
        CHECK(error.code == ZRKUpdaterErrorInvalidInfo);
        CHECK(error.userInfo == Dictionary{{"info", feed}});
    }
    machine.serve("update.plist", "(a, b)");
    CHECK(errorIn(check(machine)).userInfo == Dictionary{{"info", Array{"a", "b"}}});
}

TEST_CASE("a server that is not there, cuts off or stays silent is told within the limit of time")
{
    UpdateMachine machine;
    machine.serveFeed(feedOf("2.0"));
    machine.writeConfiguration({{"Feed", "http://127.0.0.1:1/update.plist"}});
    machine.start();
    auto error = errorIn(check(machine));
    CHECK(error.code == ZRKUpdaterErrorFetchInfo);
    CHECK(error.userInfo == Dictionary());
    REQUIRE(error.underlying);
    CHECK(error.underlying->domain == "NSURLErrorDomain");
    CHECK(error.underlying->code == -1004);

    machine.writeConfiguration();
    machine.start();
    machine.answer("update.plist", "cut 40");
    error = errorIn(check(machine));
    CHECK(error.code == ZRKUpdaterErrorFetchInfo);
    CHECK(error.underlying->code == -1005);

    machine.answer("update.plist", "silent");
    const auto begin = std::chrono::steady_clock::now();
    error = errorIn(check(machine));
    CHECK(error.code == ZRKUpdaterErrorFetchInfo);
    CHECK(error.underlying->code == -1001);
    CHECK(std::chrono::steady_clock::now() - begin < std::chrono::seconds(10));
}

TEST_CASE("a certificate that nobody vouches for is an untrusted server")
{
    UpdateMachine machine(Transport::Foreign);
    machine.serveFeed(feedOf("2.0"));
    machine.start();
    auto error = errorIn(check(machine));
    CHECK(error.code == ZRKUpdaterErrorUntrustedServer);
    REQUIRE(error.underlying);
    CHECK(error.underlying->code == -1202);
}

TEST_CASE("over TLS with a certificate that is vouched for updates are found, and never led away from TLS")
{
    UpdateMachine machine(Transport::Trusted);
    machine.serveFeed(feedOf("2.0"));
    machine.start();
    CHECK(recordIn(check(machine)).contains("Version"));
    machine.answer("update.plist", "redirect http://127.0.0.1:1/update.plist");
    auto error = errorIn(check(machine));
    CHECK(error.code == ZRKUpdaterErrorFetchInfo);
    CHECK(error.underlying->code == -1002);
    machine.serveAgain("update.plist");
    machine.serveFeed(feedWith("Package", "http://127.0.0.1:1/Brevane.pkg"));
    checkError(check(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorInvalidInfo);
}

TEST_CASE("a redirection is followed, but not for ever and not to a file")
{
    UpdateMachine machine;
    machine.start();
    machine.serveFeed(feedOf("2.0"));
    outputOf({"cp", machine.served("update.plist"), machine.served("elsewhere.plist")});
    machine.answer("update.plist", "redirect /elsewhere.plist");
    CHECK(recordIn(check(machine)).contains("Version"));
    machine.answer("update.plist", "redirect /update.plist");
    CHECK(errorIn(check(machine)).underlying->code == -1007);
    machine.answer("update.plist", "redirect file://" + machine.served("elsewhere.plist"));
    checkError(check(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorFetchInfo);
}

TEST_CASE("a phased version is for no machine, some or all")
{
    UpdateMachine machine;
    machine.start();
    machine.serveFeed(feedWith("Share", 0));
    checkError(check(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorPhasedDeferral);
    machine.serveFeed(feedWith("Share", 100));
    CHECK(recordIn(check(machine)).contains("Version"));
}

TEST_CASE("a feed may be a file")
{
    UpdateMachine machine;
    machine.writeConfiguration({{"Feed", "file://" + machine.served("update.plist")}});
    machine.start();
    checkError(check(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorFetchInfo);
    machine.serveFeed(feedOf("2.0"));
    CHECK(recordIn(check(machine)).contains("Version"));
}

TEST_CASE("while a check is under way settings are served and changed")
{
    UpdateMachine machine;
    machine.writeConfiguration({{"Patience", 6}});
    machine.start();
    machine.answer("update.plist", "silent");
    auto first = machine.sendLater(BRVMessageCheckForUpdates);
    REQUIRE(waitUntil([&] { return machine.requestCount() == 1; }));
    CHECK(recordIn(machine.send(BRVMessageGetSettings)).contains("Backups"));
    CHECK(recordIn(machine.send(BRVMessageSetAutoUpdates, Dictionary{{"Enabled", true}})).contains("Applied"));
    CHECK(first.wait_for(std::chrono::seconds(0)) != std::future_status::ready);
    checkError(first.get(), ZRKUpdaterErrorDomain, ZRKUpdaterErrorFetchInfo);
    machine.serveAgain("update.plist");
    machine.serveFeed(feedOf("2.0"));
    CHECK(recordIn(check(machine)).contains("Version"));
}

TEST_CASE("an install or an uninstallation ends a check, and whoever waits for it is told")
{
    UpdateMachine machine;
    machine.writeConfiguration({{"Patience", 30}});
    machine.start();
    machine.answer("update.plist", "trickle");
    std::vector<std::future<platform::ServiceReply>> waiting;
    for (int count = 0; count < 3; ++count)
        waiting.push_back(machine.sendLater(BRVMessageCheckForUpdates));
    REQUIRE(waitUntil([&] { return machine.requestCount() == 1; }));
    CHECK(recordIn(machine.send(BRVMessageGetSettings)).contains("Backups")); // all are in
    SUBCASE("an install")
    {
        machine.serveAgain("update.plist");
        machine.serveFeed(feedOf("1.0"));
        checkError(machine.send(BRVMessageInstallUpdate), ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate);
        CHECK(machine.requestCount() == 2);
    }
    SUBCASE("an uninstallation")
    {
        CHECK(recordIn(machine.send(BRVMessageUninstall)).contains("Applied"));
        CHECK(machine.helper().wait() == 0);
    }
    for (auto& each : waiting)
        checkError(each.get(), BRVErrorDomain, BRVErrorUpdateRunning);
    CHECK(waitUntil([&] { return isGivenUp(machine); }));
}

TEST_CASE("those who ask meanwhile and soon after get the answer to one question")
{
    UpdateMachine machine;
    machine.writeConfiguration({{"Keeping", 3}});
    machine.start();
    machine.serveFeed(feedOf("2.0"));
    machine.answer("update.plist", "hold");
    std::vector<std::future<platform::ServiceReply>> waiting;
    for (int count = 0; count < 5; ++count)
        waiting.push_back(machine.sendLater(BRVMessageCheckForUpdates));
    REQUIRE(waitUntil([&] { return machine.requestCount() == 1; }));
    CHECK(recordIn(machine.send(BRVMessageGetSettings)).contains("Backups"));
    machine.serve("update.plist.go", "");
    for (auto& each : waiting)
        CHECK(*recordIn(each.get()).stringForKey("Version") == "2.0");
    machine.serveAgain("update.plist");
    machine.serveFeed(feedOf("3.0"));
    CHECK(*recordIn(check(machine)).stringForKey("Version") == "2.0");
    CHECK(machine.requestCount() == 1);
    CHECK(waitUntil([&] { return *recordIn(check(machine)).stringForKey("Version") == "3.0"; }));
    CHECK(machine.requestCount() == 2);
}

TEST_CASE("a failure is kept like any other answer")
{
    UpdateMachine machine;
    machine.writeConfiguration({{"Keeping", 60}});
    machine.start();
    machine.answer("update.plist", "status 503");
    for (int count = 0; count < 20; ++count)
        checkError(check(machine), ZRKUpdaterErrorDomain, ZRKUpdaterErrorFetchInfo);
    CHECK(machine.requestCount() == 1);
}

TEST_CASE("one that repeats the question without end gets no install of another refused, and the server one request")
{
    UpdateMachine machine;
    machine.writeConfiguration({{"Keeping", 60}});
    machine.start();
    machine.serveFeed(feedOf("1.0"));
    Asker asker;
    std::atomic<int> count = 0;
    std::atomic<bool> isEnding = false;
    std::thread attack([&] {
        while (!isEnding)
            count += asker.ask() ? 1 : 0;
    });
    CHECK(waitUntil([&] { return count > 0; }));
    for (int number = 0; number < 40; ++number)
        checkError(machine.send(BRVMessageInstallUpdate), ZRKUpdaterErrorDomain, ZRKUpdaterErrorUpToDate);
    isEnding = true;
    attack.join();
    CHECK(count > 40);
    CHECK(machine.requestCount() == 41);
}

TEST_CASE("a server that trickles is told within the limit of time")
{
    UpdateMachine machine;
    machine.start();
    machine.answer("update.plist", "trickle");
    const auto begin = std::chrono::steady_clock::now();
    const auto error = errorIn(check(machine));
    CHECK(error.code == ZRKUpdaterErrorFetchInfo);
    CHECK(error.underlying->code == -1001);
    CHECK(std::chrono::steady_clock::now() - begin < std::chrono::seconds(10));
}

TEST_CASE("a check ends when all who waited for it have left")
{
    UpdateMachine machine;
    machine.writeConfiguration({{"Patience", 60}});
    machine.start();
    machine.answer("update.plist", "trickle");
    {
        Asker first;
        Asker second;
        first.begin();
        second.begin();
        REQUIRE(waitUntil([&] { return machine.requestCount() == 1; }));
        std::this_thread::sleep_for(std::chrono::milliseconds(1500));
        CHECK_FALSE(isGivenUp(machine));
    }
    CHECK(waitUntil([&] { return isGivenUp(machine); }));
    CHECK(machine.requestCount() == 1);
}

TEST_CASE("a question that asks for no answer is none")
{
    UpdateMachine machine;
    machine.start();
    machine.serveFeed(feedOf("2.0"));
    Asker asker;
    asker.tell();
    CHECK(asker.ask());
    CHECK(machine.requestCount() == 1);
}
