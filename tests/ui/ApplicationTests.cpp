#include "platform/Queue.h"
#include "platform/ui/Alert.h"
#include "platform/ui/Application.h"
#include "platform/ui/Interface.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/TemporaryDirectory.h"

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <doctest/doctest.h>
#include <functional>
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <string>
#include <string_view>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

using namespace platform::ui;

namespace {

int reportDescriptor = -1; // of the child

void report(std::string_view word)
{
    CHECK(write(reportDescriptor, word.data(), word.size()) >= 0);
}

class Delegate : public ApplicationDelegate {
public:
    explicit Delegate(std::function<void(Delegate&)> whenLaunched) : _whenLaunched(std::move(whenLaunched)) { }

    void awakeFromNib() override { report("awake "); }
    void applicationDidFinishLaunching() override
    {
        report("launched ");
        _whenLaunched(*this);
    }
    bool applicationShouldTerminate() override
    {
        report("asked ");
        if (whenAsked)
            whenAsked();
        return mayTerminate();
    }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }
    void applicationWillTerminate() override { report("ending "); }
    bool applicationDidReopen(bool hasWindowInFront) override
    {
        report(hasWindowInFront ? "reopened behind a window " : "reopened ");
        if (!showsLater)
            terminateApplication();
        return true;
    }
    void applicationShouldShow(const std::string& window) override
    {
        report("show " + window + " ");
        terminateApplication();
    }

    std::function<bool()> mayTerminate = [] { return true; };
    std::function<void()> whenAsked;
    bool showsLater = false; // after it was reopened
    std::unique_ptr<Interface> interface;

private:
    std::function<void(Delegate&)> _whenLaunched;
};

// Runs an application whose delegate does this after the launch, in a home of its own. What it reported, and its exit
// status.
std::string run(const std::function<void(Delegate&)>& whenLaunched, std::vector<std::string> more = {})
{
    int ends[2];
    REQUIRE(pipe(ends) == 0);
    const TemporaryDirectory home;
    const auto child = fork();
    if (child == 0) {
        alarm(30); // no case may hang the others
        setenv("HOME", home.path().c_str(), 1);
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        close(ends[0]);
        reportDescriptor = ends[1];
        char name[] = "application";
        std::vector<char*> arguments{name};
        for (auto& each : more)
            arguments.push_back(each.data());
        const auto count = static_cast<int>(arguments.size());
        arguments.push_back(nullptr);
        const int status =
            applicationMain(count, arguments.data(), [&] { return std::make_shared<Delegate>(whenLaunched); });
        report("status " + std::to_string(status));
        _exit(0);
    }
    close(ends[1]);
    std::string reported;
    char buffer[256];
    for (ssize_t count = 0; (count = read(ends[0], buffer, sizeof buffer)) > 0;)
        reported.append(buffer, static_cast<std::size_t>(count));
    close(ends[0]);
    int status = 0;
    waitpid(child, &status, 0);
    return WIFSIGNALED(status) ? "killed by signal " + std::to_string(WTERMSIG(status)) : reported;
}

// A further start of the application that is running, as seen from it: what it ends with, once it has.
std::string startAgain(const char* home = nullptr, const char* window = nullptr)
{
    const auto child = fork();
    if (child == 0) {
        alarm(30);
        if (home)
            setenv("HOME", home, 1);
        execl(LAUNCH_PROBE, "application", "once", window ? "--show" : nullptr, window, nullptr);
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? std::to_string(WEXITSTATUS(status)) : "killed";
}

} // namespace

TEST_CASE("terminating before the loop runs asks the delegate and ends with status 0")
{
    CHECK(run([](Delegate&) {
              terminateApplication();
              report("returned ");
          })
          == "awake launched returned asked ending status 0");
}

TEST_CASE("asking twice to terminate asks the delegate once")
{
    CHECK(run([](Delegate&) {
              terminateApplication();
              terminateApplication();
          })
          == "awake launched asked ending status 0");
}

TEST_CASE("a delegate can refuse to terminate and is asked again the next time")
{
    CHECK(run([](Delegate& delegate) {
              delegate.mayTerminate = [calls = 0]() mutable {
                  if (++calls < 2)
                      terminateApplication();
                  return calls == 2;
              };
              terminateApplication();
          })
          == "awake launched asked asked ending status 0");
}

TEST_CASE("the signals that ask a process to end terminate it without a question")
{
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        CAPTURE(number);
        CHECK(run([number](Delegate&) { platform::Queue::main()->async([number] { raise(number); }); })
              == "awake launched ending status 0");
    }
}

TEST_CASE("the end of the session terminates without a question and with its windows open")
{
    CHECK(run([](Delegate& delegate) {
              delegate.interface = Interface::load("MainWindow");
              delegate.interface->window()->makeKeyAndOrderFront();
              QCoreApplication::postEvent(qApp, new QEvent(QEvent::Quit));
          })
          == "awake launched ending status 0");
}

TEST_CASE("a signal ends the application within a second while a request holds up its main loop")
{
    for (const int number : {SIGTERM, SIGINT}) {
        CAPTURE(number);
        const auto start = std::chrono::steady_clock::now();
        CHECK(run([number](Delegate&) {
                  raise(number);
                  for (;;)
                      pause();
              })
              == "killed by signal " + std::to_string(number));
        const auto taken = std::chrono::steady_clock::now() - start;
        CHECK(taken < std::chrono::milliseconds(1500)); // its start and its end
    }
}

TEST_CASE("a signal during the question at the end aborts it, and ends the application once")
{
    CHECK(run([](Delegate& delegate) {
              delegate.whenAsked = [] {
                  platform::Queue::main()->async([] { raise(SIGTERM); });
                  report("answer " + std::to_string(Alert().runModal()) + " ");
              };
              terminateApplication();
          })
          == "awake launched asked ending answer -1001 status 0");
}

TEST_CASE("a signal that the process was started to ignore stays ignored")
{
    CHECK(run([](Delegate&) {
              platform::Queue::main()->async([] {
                  raise(SIGHUP);
                  report("still here ");
                  raise(SIGTERM);
              });
          })
          == "awake launched still here ending status 0");
    signal(SIGHUP, SIG_IGN);
    CHECK(run([](Delegate&) {
              platform::Queue::main()->async([] {
                  raise(SIGHUP);
                  platform::Queue::main()->async([] {
                      report("ignored ");
                      terminateApplication();
                  });
              });
          })
          == "awake launched ignored asked ending status 0");
    signal(SIGHUP, SIG_DFL);
}

TEST_CASE("the main queue is served, also from other threads and while an alert is modal")
{
    CHECK(run([](Delegate&) {
              std::thread([] { platform::Queue::main()->async([] { report("task "); }); }).join();
              platform::Queue::main()->async(terminateApplication);
          })
          == "awake launched task asked ending status 0");
    CHECK(run([](Delegate&) {
              platform::Queue::main()->async([] {
                  report("task ");
                  raise(SIGTERM);
              });
              Alert alert;
              alert.addButton("First");
              alert.addButton("Second");
              report("answer " + std::to_string(alert.runModal()) + " ");
          })
          == "awake launched task ending answer -1001 status 0");
}

TEST_CASE("closing the last window terminates the application, and an alert that closes then does not ask again")
{
    CHECK(run([](Delegate& delegate) {
              delegate.whenAsked = [] {
                  QTimer::singleShot(0, [] { QApplication::activeModalWidget()->close(); });
                  report("answer " + std::to_string(Alert().runModal()) + " ");
              };
              delegate.interface = Interface::load("MainWindow");
              delegate.interface->window()->makeKeyAndOrderFront();
              platform::Queue::main()->async([&delegate] { delegate.interface->window()->close(); });
          })
          == "awake launched asked answer -1000 ending status 0");
}

TEST_CASE("a second start tells the first one, and ends with status 0 without a delegate")
{
    const auto reported = run([](Delegate& delegate) {
        const auto starting = std::make_shared<std::thread>([] { report("second " + startAgain() + " "); });
        delegate.whenAsked = [starting] { starting->join(); };
    });
    for (const char* const part : {"awake launched ", "reopened ", "second 0 ", "asked "})
        CHECK(reported.find(part) != std::string::npos);
    CHECK(reported.ends_with("status 0"));
}

TEST_CASE("a second start while the first one is busy ends all the same, and is heard later")
{
    CHECK(run([](Delegate&) { report("second " + startAgain() + " "); })
          == "awake launched second 0 reopened asked ending status 0");
}

TEST_CASE("a window that the arguments name is shown after the launch, and an argument without a name shows nothing")
{
    CHECK(run([](Delegate&) { }, {"--show", "activity"}) == "awake launched show activity asked ending status 0");
    CHECK(run([](Delegate&) { terminateApplication(); }, {"--show"}) == "awake launched asked ending status 0");
}

TEST_CASE("a second start that names a window has the first one show it")
{
    CHECK(run([](Delegate& delegate) {
              delegate.showsLater = true;
              report("second " + startAgain(nullptr, "activity") + " ");
          })
          == "awake launched second 0 reopened show activity asked ending status 0");
}

TEST_CASE("another user's or display's application is no second start")
{
    CHECK(run([](Delegate&) {
              report("other " + startAgain("/dev/null/elsewhere") + " ");
              terminateApplication();
          })
          == "awake launched other 42 asked ending status 0");
}

TEST_CASE("a display with and without the number of its screen is one, and another display another")
{
    const EnvironmentVariable platform("QT_QPA_PLATFORM", "offscreen");
    const EnvironmentVariable display("DISPLAY", ":7");
    const auto startedOn = [](const char* other) {
        return run([other](Delegate&) {
            setenv("DISPLAY", other, 1);
            const auto status = startAgain();
            report(status + " ");
            if (status != "0")
                terminateApplication();
        });
    };
    CHECK(startedOn(":7.0") == "awake launched 0 reopened asked ending status 0");
    CHECK(startedOn(":7") == "awake launched 0 reopened asked ending status 0");
    CHECK(startedOn(":8") == "awake launched 42 asked ending status 0");
    CHECK(startedOn(":70") == "awake launched 42 asked ending status 0");
}

TEST_CASE("an application that was killed leaves nothing behind that a next start would take for it")
{
    const TemporaryDirectory home;
    const EnvironmentVariable variable("HOME", home.path());
    for (int turn = 0; turn < 2; ++turn) {
        const auto child = fork();
        if (child == 0) {
            execl(LAUNCH_PROBE, "application", "hang", nullptr);
            _exit(127);
        }
        usleep(300'000);
        kill(child, SIGKILL);
        int status = 0;
        waitpid(child, &status, 0);
        CHECK(WIFSIGNALED(status));
        CHECK(startAgain() == "42");
    }
}
