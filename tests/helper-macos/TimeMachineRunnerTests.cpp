#include "helper/macos/timemachine/TimeMachineRunner.h"
#include "helper/macos/timemachine/TimeMachineWatch.h"
#include "platform/Queue.h"
#include "tests/helper-macos/StandInTool.h"

#include <atomic>
#include <condition_variable>
#include <doctest/doctest.h>
#include <mutex>
#include <thread>

using helper::BackupMemory;
using helper::TimeMachineRunner;
using helper::TimeMachineWatch;
using platform::BackupEvent;

namespace {

using Milliseconds = std::chrono::milliseconds;

// A runner over a tool that a test moves on, and what it told.
class RunByTimeMachine {
public:
    std::unique_ptr<TimeMachineRunner> makeRunner()
    {
        return std::make_unique<TimeMachineRunner>(
            TimeMachineRunner::Parts{.tool = standIn.tool(),
                                     .file = standIn.folder.file("db/backup.plist"),
                                     .memory =
                                         [this] {
                                             const std::lock_guard guard(_lock);
                                             return _memory;
                                         },
                                     .pause = Milliseconds(50),
                                     .patience = patience},
            queue, [this](const BackupEvent& event) {
                const std::lock_guard guard(_lock);
                _events.push_back(event);
                _changed.notify_all();
            });
    }
    platform::BackupJob job(const std::string& identifier) const
    {
        return {.identifier = identifier,
                .commands = {standIn.tool().startCommand()},
                .environment = {},
                .overdueAfter = overdueAfter};
    }
    void remember(std::optional<BackupMemory> memory)
    {
        const std::lock_guard guard(_lock);
        _memory = memory;
    }
    std::optional<BackupEvent> event(std::size_t number)
    {
        std::unique_lock guard(_lock);
        _changed.wait_for(guard, std::chrono::seconds(20), [&] { return _events.size() > number; });
        return _events.size() > number ? std::optional(_events[number]) : std::nullopt;
    }
    std::size_t countOfEvents()
    {
        const std::lock_guard guard(_lock);
        return _events.size();
    }
    // Until the tool was asked that often again.
    void waitForQuestions(std::size_t count) const
    {
        const auto asked = [this] {
            const auto calls = standIn.calls();
            std::size_t found = 0;
            for (auto at = calls.find("status\n"); at != std::string::npos; at = calls.find("status\n", at + 1))
                ++found;
            return found;
        };
        const auto before = asked();
        for (int attempt = 0; attempt < 2000 && asked() < before + count; ++attempt)
            std::this_thread::sleep_for(Milliseconds(10));
        REQUIRE(asked() >= before + count);
    }

    const StandInTool standIn;
    Milliseconds patience{150};
    std::optional<std::chrono::seconds> overdueAfter;
    const std::shared_ptr<platform::Queue> queue = platform::Queue::createSerial("test");

private:
    std::mutex _lock; // of what follows
    std::condition_variable _changed;
    std::vector<BackupEvent> _events;
    std::optional<BackupMemory> _memory = BackupMemory{.newest = 1000, .result = 0};
};

BackupEvent ended(const std::string& identifier, std::optional<int> status, const std::string& reason = {})
{
    return {.kind = BackupEvent::Kind::Ended, .identifier = identifier, .status = status, .reason = reason};
}

constexpr BackupMemory newer{.newest = 4'000'000'000, .result = 0};

} // namespace

TEST_CASE("a backup is started by the tool, followed to its end, and told once")
{
    RunByTimeMachine test;
    const auto runner = test.makeRunner();
    CHECK_FALSE(runner->running());
    CHECK_FALSE(runner->lastEnd());
    test.standIn.sayPhase("Copying");
    REQUIRE(runner->start(test.job("one")));
    CHECK(test.standIn.calls().starts_with("startbackup --auto\n"));
    CHECK(runner->running() == "one");
    CHECK(runner->start(test.job("two")).error().code == EBUSY);
    test.waitForQuestions(3);
    CHECK(test.countOfEvents() == 0);

    test.remember(newer);
    test.standIn.say("status", StandInTool::idle);
    CHECK(test.event(0) == ended("one", 0));
    CHECK_FALSE(runner->running());
    CHECK(runner->lastEnd() == ended("one", 0));
    std::this_thread::sleep_for(Milliseconds(300));
    CHECK(test.countOfEvents() == 1);
}

TEST_CASE("nobody asks the tool while no backup runs")
{
    RunByTimeMachine test;
    const auto runner = test.makeRunner();
    std::this_thread::sleep_for(Milliseconds(300));
    CHECK(test.standIn.calls().empty());
}

TEST_CASE("a backup that Time Machine remembers a little later has succeeded too")
{
    RunByTimeMachine test;
    test.patience = Milliseconds(20'000);
    const auto runner = test.makeRunner();
    test.standIn.sayPhase("Copying");
    REQUIRE(runner->start(test.job("one")));
    test.waitForQuestions(2);
    test.standIn.say("status", StandInTool::idle);
    test.waitForQuestions(3);
    CHECK(runner->running() == "one");
    test.remember(newer);
    CHECK(test.event(0) == ended("one", 0));
}

TEST_CASE("a backup that nothing comes of is told with the reason")
{
    RunByTimeMachine test;
    const auto runner = test.makeRunner();
    SUBCASE("since it never began")
    {
        REQUIRE(runner->start(test.job("one")));
        CHECK(test.event(0) == ended("one", 1, "Time Machine did not begin it. Its disk may not be there."));
    }
    SUBCASE("since it was stopped")
    {
        test.standIn.sayPhase("Copying", true);
        REQUIRE(runner->start(test.job("one")));
        test.waitForQuestions(2);
        test.standIn.say("status", StandInTool::idle);
        CHECK(test.event(0) == ended("one", 1, "it was stopped."));
    }
    SUBCASE("since Time Machine ended it")
    {
        test.standIn.sayPhase("Copying");
        REQUIRE(runner->start(test.job("one")));
        test.waitForQuestions(2);
        test.remember(BackupMemory{.newest = 1000, .result = 26});
        test.standIn.say("status", StandInTool::idle);
        CHECK(test.event(0) == ended("one", 1, "Time Machine ended it with error 26."));
    }
    CHECK_FALSE(runner->running());
}

TEST_CASE("without access to what Time Machine remembers a backup that copied has succeeded")
{
    RunByTimeMachine test;
    test.remember(std::nullopt);
    const auto runner = test.makeRunner();
    test.standIn.sayPhase("Copying");
    REQUIRE(runner->start(test.job("one")));
    test.waitForQuestions(2);
    test.standIn.say("status", StandInTool::idle);
    CHECK(test.event(0) == ended("one", 0));
}

TEST_CASE("a backup that cannot be started is refused in the tool's words, and another one can be tried")
{
    RunByTimeMachine test;
    const auto runner = test.makeRunner();
    test.standIn.complain("startbackup", "No destinations are configured.", 1);
    const auto started = runner->start(test.job("one"));
    REQUIRE_FALSE(started);
    CHECK(platform::localizedDescription(started.error()) == "No destinations are configured.");
    CHECK_FALSE(runner->running());
    CHECK(test.countOfEvents() == 0);
    CHECK_FALSE(runner->start(test.job("two")));
}

TEST_CASE("a tool that does not answer ends no backup")
{
    RunByTimeMachine test;
    const auto runner = test.makeRunner();
    test.standIn.sayPhase("Copying");
    REQUIRE(runner->start(test.job("one")));
    test.waitForQuestions(2);
    test.standIn.say("status", "what?");
    test.waitForQuestions(5);
    CHECK(runner->running() == "one");
    CHECK(test.countOfEvents() == 0);
}

TEST_CASE("a backup outlives its runner, and the next one finds it running")
{
    RunByTimeMachine test;
    test.standIn.sayPhase("Copying");
    {
        const auto runner = test.makeRunner();
        REQUIRE(runner->start(test.job("one")));
        test.waitForQuestions(2);
    }
    const auto next = test.makeRunner();
    CHECK(next->running() == "one");
    CHECK_FALSE(next->lastEnd());
    test.remember(newer);
    test.standIn.say("status", StandInTool::idle);
    CHECK(test.event(0) == ended("one", 0));
}

TEST_CASE("the end of a backup that nobody watched is known to whoever comes next")
{
    RunByTimeMachine test;
    test.standIn.sayPhase("Copying");
    {
        const auto runner = test.makeRunner();
        REQUIRE(runner->start(test.job("one")));
        test.waitForQuestions(2);
    }
    test.standIn.say("status", StandInTool::idle);
    test.remember(newer);
    const auto next = test.makeRunner();
    CHECK_FALSE(next->running());
    CHECK(next->lastEnd() == ended("one", 0));
    const auto later = test.makeRunner();
    CHECK(later->lastEnd() == ended("one", 0));
    CHECK_FALSE(later->running());
}

TEST_CASE("a backup that takes too long is told as such once, and goes on")
{
    RunByTimeMachine test;
    test.overdueAfter = std::chrono::seconds(1);
    const auto runner = test.makeRunner();
    test.standIn.sayPhase("Copying");
    REQUIRE(runner->start(test.job("one")));
    const auto told = test.event(0);
    REQUIRE(told);
    CHECK(told->kind == BackupEvent::Kind::Overdue);
    CHECK(told->identifier == "one");
    CHECK(runner->running() == "one");
}

TEST_CASE("whether a backup runs is asked for, and again only until it does not")
{
    const StandInTool standIn;
    const auto queue = platform::Queue::createSerial("test");
    std::atomic<int> changes = 0;
    const TimeMachineWatch watch(standIn.tool(), queue, [&changes] { ++changes; },
                                 {.whileRunning = Milliseconds(50), .asFresh = Milliseconds(0)});
    const auto waitForChanges = [&changes](int count) {
        for (int attempt = 0; attempt < 2000 && changes < count; ++attempt)
            std::this_thread::sleep_for(Milliseconds(10));
        return changes == count;
    };
    CHECK_FALSE(watch.isRunning());
    std::this_thread::sleep_for(Milliseconds(300));
    CHECK(standIn.calls() == "status\n");
    CHECK(changes == 0);

    standIn.sayPhase("Copying");
    CHECK(watch.isRunning());
    CHECK(waitForChanges(1));
    standIn.say("status", StandInTool::idle);
    CHECK(waitForChanges(2)); // unasked
    CHECK_FALSE(watch.isRunning());
    const auto calls = standIn.calls();
    std::this_thread::sleep_for(Milliseconds(300));
    CHECK(standIn.calls() == calls);
}

TEST_CASE("a fresh answer is taken for another one, and no answer for no backup")
{
    const StandInTool standIn;
    const auto queue = platform::Queue::createSerial("test");
    const TimeMachineWatch watch(standIn.tool(), queue, [] { },
                                 {.whileRunning = Milliseconds(60'000), .asFresh = Milliseconds(60'000)});
    standIn.sayPhase("Copying");
    CHECK(watch.isRunning());
    standIn.say("status", StandInTool::idle);
    CHECK(watch.isRunning());
    CHECK(standIn.calls() == "status\n");
    const TimeMachineWatch blind(helper::TimeMachineTool("/nowhere/tmutil"), queue, [] { }, {});
    CHECK_FALSE(blind.isRunning());
}
