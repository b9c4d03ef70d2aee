#include "messaging/BRVHelperMessager.h"
#include "tests/update-integration/UpdateMachine.h"

#include <chrono>
#include <csignal>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <sysexits.h>
#include <thread>

namespace files = std::filesystem;

namespace {

// A program that is called as the application and starts the tool as the application does; it prints the tool's
// process, and its end with the status.
class Application {
public:
    explicit Application(UpdateMachine& machine)
    {
        files::copy_file(files::canonical("/bin/sh"), machine.file("brevane"));
        _process = std::make_unique<ChildProcess>(
            ChildProcess::Arguments{machine.file("brevane"), "-c",
                                    "setsid \"$0\" & echo $!; wait $!; echo ended $?; read line", BREVANE_POST_UPDATE});
        _tool = static_cast<pid_t>(std::stol(_process->readLine().value_or("0")));
        REQUIRE(_tool > 0);
        // It is ready once it sleeps in its wait for changes.
        REQUIRE(waitUntil([&] {
            std::ifstream stream("/proc/" + std::to_string(_tool) + "/wchan");
            std::string place;
            stream >> place;
            return place.contains("poll") || place == "0";
        }));
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
    }

    ChildProcess& process() { return *_process; }
    pid_t tool() const { return _tool; }
    bool toolRuns() const
    {
        std::error_code failure; // of one that nobody has waited for yet, too
        return !files::read_symlink("/proc/" + std::to_string(_tool) + "/exe", failure).empty();
    }

private:
    std::unique_ptr<ChildProcess> _process;
    pid_t _tool = 0;
};

std::string started(UpdateMachine& machine)
{
    std::ifstream stream(machine.file("started"));
    std::string version;
    stream >> version;
    return version;
}

} // namespace

TEST_CASE("the post-update tool waits for the new version, ends the old application and starts the new one")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    Application application(machine);
    CHECK(application.process().isRunning());
    CHECK(started(machine).empty());
    REQUIRE(recordIn(machine.send(BRVMessageInstallUpdate)).contains("Applied"));
    CHECK(application.process().wait() == -SIGTERM);
    CHECK(waitUntil([&] { return started(machine) == "2.0"; }));
    CHECK(waitUntil([&] { return !application.toolRuns(); }));
}

TEST_CASE("the post-update tool leaves on signal 15, and the application goes on")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    Application application(machine);
    REQUIRE(::kill(application.tool(), SIGTERM) == 0);
    CHECK(application.process().readLine() == "ended " + std::to_string(128 + SIGTERM));
    REQUIRE(recordIn(machine.send(BRVMessageInstallUpdate)).contains("Applied"));
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    CHECK(application.process().isRunning());
    CHECK(started(machine).empty());
}

TEST_CASE("the post-update tool leaves when its application goes away before the new version is there")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    Application application(machine);
    application.process().kill();
    CHECK(waitUntil([&] { return !application.toolRuns(); }));
    CHECK(started(machine).empty());
}

TEST_CASE("the post-update tool ends nobody who merely started it by hand")
{
    UpdateMachine machine;
    machine.start();
    machine.offer("2.0");
    ChildProcess shell({"sh", "-c", "\"$0\"; echo ended $?", BREVANE_POST_UPDATE});
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    REQUIRE(recordIn(machine.send(BRVMessageInstallUpdate)).contains("Applied"));
    CHECK(shell.readLine(20000) == "ended 0");
    CHECK(waitUntil([&] { return started(machine) == "2.0"; }));
}

TEST_CASE("the post-update tool says how it is used")
{
    CHECK(ChildProcess({BREVANE_POST_UPDATE, "--other"}).wait() == EX_USAGE);
    ChildProcess help({BREVANE_POST_UPDATE, "--help"});
    CHECK(help.readLine().value_or("").starts_with("usage: "));
    CHECK(help.wait() == 0);
}
