#include "messaging/BRVHelperMessager.h"
#include "tests/support/Instrumented.h"
#include "tests/update-integration/UpdateMachine.h"

#include <chrono>
#include <csignal>
#include <doctest/doctest.h>
#include <fstream>
#include <random>
#include <string_view>
#include <thread>

namespace {

// Puts the old version back, if the last round installed the new one.
void beginRound(UpdateMachine& machine)
{
    if (machine.wholeVersion() != "1.0")
        machine.layOut("1.0");
}

// What must hold after a kill: a whole version at once, and after a start the same one with nothing beside it.
void checkAfterKill(UpdateMachine& machine)
{
    machine.killHelper(); // the watch over the update, too
    const auto version = machine.wholeVersion();
    CHECK((version == "1.0" || version == "2.0"));
    machine.start();
    CHECK(machine.waitForTrial());
    CHECK(machine.wholeVersion() == version);
}

// Ends the process when one of its threads is about to make the call for the count-th time.
class Tracer {
public:
    Tracer(pid_t process, const std::string& call, int count)
        : _strace({"strace", "-f", "-qq", "-o", "/dev/null", "-e", "trace=" + call, "-e",
                   "inject=" + call + ":signal=SIGKILL:when=" + std::to_string(count), "-p", std::to_string(process)})
    {
        REQUIRE(waitUntil([&] {
            std::ifstream stream("/proc/" + std::to_string(process) + "/status");
            for (std::string line; std::getline(stream, line);) {
                if (line.starts_with("TracerPid:"))
                    return line != "TracerPid:\t0";
            }
            return false;
        }));
    }

private:
    ChildProcess _strace;
};

} // namespace

TEST_CASE("killed at each step of an install, the old or the new version is there, whole")
{
    if (isInstrumented) {
        MESSAGE("SKIPPED: the leak sanitizer fails in a process that is traced");
        return;
    }
    try {
        outputOf({"strace", "-qq", "-e", "trace=none", "true"});
    } catch (const std::exception&) {
        MESSAGE("SKIPPED: strace is not installed, or may not trace here");
        return;
    }
    UpdateMachine machine;
    machine.offer("2.0");
    machine.start(); // what only a first start does is done
    int killed = 0;
    int replaced = 0;
    for (const char* call : {"mkdir", "mkdirat", "pwrite64", "fchmod", "fsync", "syncfs", "symlink", "symlinkat",
                             "rename", "renameat2", "unlink", "unlinkat", "rmdir"}) {
        // One file takes many calls to write, and they are all alike.
        const bool isAlike = call == std::string_view("pwrite64");
        for (int count = 1;; count += isAlike ? count : 1) {
            CAPTURE(call);
            CAPTURE(count);
            beginRound(machine);
            if (!machine.helper().isRunning())
                machine.start();
            const Tracer tracer(machine.helperProcess(), call, count);
            auto reply = machine.send(BRVMessageInstallUpdate);
            if (reply) {
                CHECK(recordIn(reply).contains("Applied"));
                CHECK(machine.wholeVersion() == "2.0");
                machine.killHelper();
                break;
            }
            ++killed;
            checkAfterKill(machine);
            replaced += machine.wholeVersion() == "2.0";
        }
    }
    MESSAGE("killed " << killed << " times, " << replaced << " of them with the new version in the end");
    CHECK(killed > 30);
    CHECK(replaced < killed);
}

TEST_CASE("killed thirty times at random moments of an install, the installation is always whole")
{
    UpdateMachine machine;
    machine.offer("2.0");
    machine.start();
    const auto begin = std::chrono::steady_clock::now();
    REQUIRE(recordIn(machine.send(BRVMessageInstallUpdate)).contains("Applied"));
    const auto whole = std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now() - begin);
    std::mt19937 random(4711); // NOLINT: the same moments each time, as far as that goes
    int replaced = 0;
    int interrupted = 0;
    for (int round = 0; round < 30; ++round) {
        machine.killHelper();
        beginRound(machine);
        machine.start();
        auto reply = machine.sendLater(BRVMessageInstallUpdate);
        std::this_thread::sleep_for(std::chrono::microseconds(random() % static_cast<unsigned>(whole.count())));
        machine.killHelper();
        interrupted += !reply.get().has_value();
        checkAfterKill(machine);
        replaced += machine.wholeVersion() == "2.0";
    }
    CHECK(interrupted >= 6); // the others had been answered by then
    MESSAGE("an install takes " << whole.count() / 1000 << " ms; " << replaced << " of 30 kills left the new version");
}
