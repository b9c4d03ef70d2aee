#include "platform/BackgroundItem.h"
#include "platform/Workspace.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/FileContent.h"
#include "tests/support/TemporaryDirectory.h"

#include <chrono>
#include <cstdlib>
#include <doctest/doctest.h>
#include <filesystem>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace std::chrono_literals;

namespace {

// A desktop whose programs are scripts of the test's own.
struct DesktopFixture {
    void addProgram(const std::string& name, const std::string& script) const
    {
        auto path = _programs.write(name, "#!/bin/sh\n" + script);
        std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    }
    // Writes its arguments, one a line, into the file "arguments".
    void addRecorder(const std::string& name) const
    {
        addProgram(name,
                   "{ echo \"$0\"; for a in \"$@\"; do echo \"$a\"; done; } > '" + _programs.file("new")
                       + "'; /bin/mv '" + _programs.file("new") + "' '" + _programs.file("arguments") + "'\n");
    }
    // Without the program's folder.
    std::string recorded() const
    {
        const auto path = _programs.file("arguments");
        for (int turn = 0; turn < 500 && !std::filesystem::exists(path); ++turn)
            std::this_thread::sleep_for(10ms);
        const auto text = contentOfFile(path);
        std::filesystem::remove(path);
        return text.starts_with(_programs.path()) ? text.substr(_programs.path().size() + 1) : text;
    }

    TemporaryDirectory _programs;
    EnvironmentVariable _path{"PATH", _programs.path()};
};

} // namespace

TEST_CASE_FIXTURE(DesktopFixture, "a URL is handed to the desktop as one argument, whatever is in it")
{
    addRecorder("xdg-open");
    CHECK(platform::openURL("https://example.com/?a=1&b='$(touch x)';\"`"));
    CHECK(recorded() == "xdg-open\nhttps://example.com/?a=1&b='$(touch x)';\"`\n");
}

TEST_CASE_FIXTURE(DesktopFixture, "a file is handed to the desktop, and never taken for an option")
{
    addRecorder("xdg-open");
    CHECK(platform::openFile("/Library/Logs/a file.log"));
    CHECK(recorded() == "xdg-open\n/Library/Logs/a file.log\n");
    CHECK(platform::openFile("--manual"));
    CHECK(recorded() == "xdg-open\n./--manual\n");
    CHECK_FALSE(platform::openURL("--manual"));
    CHECK_FALSE(platform::openURL(""));
    CHECK_FALSE(platform::openURL(std::string("https://a\0b", 11)));
}

TEST_CASE_FIXTURE(DesktopFixture, "without a desktop nothing is opened, and that is told")
{
    CHECK_FALSE(platform::openURL("https://example.com/"));
    CHECK_FALSE(platform::openFile("/"));
    CHECK_FALSE(platform::openBackgroundItemSettings());
}

TEST_CASE_FIXTURE(DesktopFixture, "opening does not wait for the program, which gets a session and signals of its own")
{
    addProgram("xdg-open",
               "/bin/cat /proc/self/stat > '" + _programs.file("new") + "'; /bin/mv '" + _programs.file("new") + "' '"
                   + _programs.file("arguments") + "'; exec /bin/sleep 5\n");
    const auto start = std::chrono::steady_clock::now();
    CHECK(platform::openURL("https://example.com/"));
    CHECK(std::chrono::steady_clock::now() - start < 4s);
    auto status = recorded();
    int session = 0;
    REQUIRE(std::sscanf(status.substr(status.rfind(')')).c_str(), ") %*c %*d %*d %d", &session) == 1);
    CHECK(session != ::getsid(0));
    ::kill(session, SIGKILL);
}

TEST_CASE_FIXTURE(DesktopFixture, "a program that was started leaves no zombie")
{
    addRecorder("xdg-open");
    for (int turn = 0; turn < 5; ++turn) {
        CHECK(platform::openURL("https://example.com/"));
        CHECK(recorded() != "");
    }
    bool reaped = false;
    for (int turn = 0; turn < 500 && !reaped; ++turn) {
        reaped = ::waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD;
        if (!reaped)
            std::this_thread::sleep_for(10ms);
    }
    CHECK(reaped);
}

TEST_CASE_FIXTURE(DesktopFixture, "services are approved in the program that the desktop has for them")
{
    addRecorder("gnome-control-center");
    CHECK(platform::openBackgroundItemSettings());
    CHECK(recorded() == "gnome-control-center\napplications\n");
    addRecorder("systemadm");
    CHECK(platform::openBackgroundItemSettings());
    CHECK(recorded() == "systemadm\n");
}

TEST_CASE_FIXTURE(DesktopFixture,
                  "a settings pane is the panel that the desktop has in its place, never a file to open")
{
    const EnvironmentVariable desktop("XDG_CURRENT_DESKTOP", "");
    const std::string panes = "/opt/brevane/System/Library/PreferencePanes/";
    addRecorder("xdg-open");
    CHECK_FALSE(platform::openFile(panes + "TimeMachine.prefPane"));
    CHECK_FALSE(platform::openFile(panes + "Security.prefPane"));
    addRecorder("xfce4-settings-manager");
    CHECK_FALSE(platform::openFile(panes + "TimeMachine.prefPane"));
    CHECK(platform::openFile(panes + "Security.prefPane"));
    CHECK(recorded() == "xfce4-settings-manager\n");
    addRecorder("xfce4-power-manager-settings");
    CHECK(platform::openFile(panes + "TimeMachine.prefPane"));
    CHECK(recorded() == "xfce4-power-manager-settings\n");
    addRecorder("gnome-control-center");
    CHECK(platform::openFile(panes + "TimeMachine.prefPane"));
    CHECK(recorded() == "gnome-control-center\npower\n");
    CHECK(platform::openFile(panes + "Security.prefPane"));
    CHECK(recorded() == "gnome-control-center\nprivacy\n");
}

TEST_CASE_FIXTURE(DesktopFixture, "the user's own desktop has the first word, and a program that fails none")
{
    const EnvironmentVariable desktop("XDG_CURRENT_DESKTOP", "ubuntu:KDE");
    const std::string pane = "/System/Library/PreferencePanes/TimeMachine.prefPane";
    addRecorder("gnome-control-center");
    addRecorder("systemsettings");
    CHECK(platform::openFile(pane));
    CHECK(recorded() == "systemsettings\nkcm_powerdevilprofilesconfig\n");
    addProgram("systemsettings", "exit 1\n");
    CHECK(platform::openFile(pane));
    CHECK(recorded() == "gnome-control-center\npower\n");
    addProgram("gnome-control-center", "kill -9 $$\n");
    CHECK_FALSE(platform::openFile(pane));
    CHECK_FALSE(platform::openBackgroundItemSettings());
}

TEST_CASE_FIXTURE(DesktopFixture, "a panel that stays open counts as opened, and is not waited for any longer")
{
    addProgram("gnome-control-center", "exec /bin/sleep 8\n");
    const auto start = std::chrono::steady_clock::now();
    CHECK(platform::openFile("/System/Library/PreferencePanes/TimeMachine.prefPane"));
    CHECK(std::chrono::steady_clock::now() - start < 6s);
}

TEST_CASE_FIXTURE(DesktopFixture, "a program is launched by its path, without arguments and in a session of its own")
{
    addRecorder("tool");
    const auto program = platform::launchProgram(_programs.file("tool"));
    REQUIRE(program);
    CHECK(recorded() == "tool\n");
}

TEST_CASE_FIXTURE(DesktopFixture, "a launched program takes signals, and none any more when it has ended")
{
    addProgram("tool",
               "trap 'echo terminated > " + _programs.file("new") + "; /bin/mv " + _programs.file("new") + " "
                   + _programs.file("arguments") + "; exit' TERM\necho > '" + _programs.file("ready")
                   + "'\nwhile :; do /bin/sleep 0.01; done\n");
    const auto program = platform::launchProgram(_programs.file("tool"));
    REQUIRE(program);
    for (int turn = 0; turn < 500 && !std::filesystem::exists(_programs.file("ready")); ++turn)
        std::this_thread::sleep_for(10ms);
    CHECK((*program)->sendSignal(SIGTERM));
    CHECK(recorded() == "terminated\n");
    bool reached = true;
    for (int turn = 0; turn < 500 && reached; ++turn) {
        reached = (*program)->sendSignal(SIGTERM);
        if (reached)
            std::this_thread::sleep_for(10ms);
    }
    CHECK_FALSE(reached);
}

TEST_CASE_FIXTURE(DesktopFixture, "a launched program goes on when nobody holds it")
{
    addProgram("tool", "/bin/sleep 0.2\necho done > '" + _programs.file("arguments") + "'\n");
    CHECK(platform::launchProgram(_programs.file("tool")));
    CHECK(recorded() == "done\n");
}

TEST_CASE_FIXTURE(DesktopFixture, "a program that cannot be launched is told with the system's own error")
{
    const auto missing = platform::launchProgram(_programs.file("none"));
    REQUIRE_FALSE(missing);
    CHECK(missing.error().domain == platform::POSIXErrorDomain);
    CHECK(missing.error().code == ENOENT);
    _programs.write("plain", "not a program");
    CHECK(platform::launchProgram(_programs.file("plain")).error().code == EACCES);
    CHECK(platform::launchProgram(std::string("a\0b", 3)).error().code == EINVAL);
    CHECK_FALSE(platform::launchProgram(""));
}
