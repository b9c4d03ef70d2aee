#include "platform/Queue.h"
#include "platform/ui/Alert.h"
#include "platform/ui/Application.h"
#include "platform/ui/Interface.h"

#include <csignal>
#include <cstdlib>
#include <doctest/doctest.h>
#include <functional>
#include <QApplication>
#include <QTimer>
#include <QWidget>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

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

    std::function<bool()> mayTerminate = [] { return true; };
    std::function<void()> whenAsked;
    std::unique_ptr<Interface> interface;

private:
    std::function<void(Delegate&)> _whenLaunched;
};

// Runs an application whose delegate does this after the launch. What it reported, and its exit status.
std::string run(const std::function<void(Delegate&)>& whenLaunched)
{
    int ends[2];
    REQUIRE(pipe(ends) == 0);
    const auto child = fork();
    if (child == 0) {
        alarm(30); // no case may hang the others
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        close(ends[0]);
        reportDescriptor = ends[1];
        char name[] = "application";
        char* arguments[] = {name, nullptr};
        const int status = applicationMain(1, arguments, [&] { return std::make_shared<Delegate>(whenLaunched); });
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

} // namespace

TEST_CASE("Terminating before the loop runs asks the delegate and ends with status 0")
{
    CHECK(run([](Delegate&) {
              terminateApplication();
              report("returned ");
          })
          == "awake launched returned asked status 0");
}

TEST_CASE("Asking twice to terminate asks the delegate once")
{
    CHECK(run([](Delegate&) {
              terminateApplication();
              terminateApplication();
          })
          == "awake launched asked status 0");
}

TEST_CASE("A delegate can refuse to terminate and is asked again the next time")
{
    CHECK(run([](Delegate& delegate) {
              delegate.mayTerminate = [calls = 0]() mutable {
                  if (++calls < 2)
                      terminateApplication();
                  return calls == 2;
              };
              terminateApplication();
          })
          == "awake launched asked asked status 0");
}

TEST_CASE("The signals that ask a process to end terminate it as quitting does")
{
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) {
        CAPTURE(number);
        CHECK(run([number](Delegate&) { platform::Queue::main()->async([number] { raise(number); }); })
              == "awake launched asked status 0");
    }
}

TEST_CASE("A signal that the process was started to ignore stays ignored")
{
    CHECK(run([](Delegate&) {
              platform::Queue::main()->async([] {
                  raise(SIGHUP);
                  report("still here ");
                  raise(SIGTERM);
              });
          })
          == "awake launched still here asked status 0");
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
          == "awake launched ignored asked status 0");
    signal(SIGHUP, SIG_DFL);
}

TEST_CASE("The main queue is served, also from other threads and while an alert is modal")
{
    CHECK(run([](Delegate&) {
              std::thread([] { platform::Queue::main()->async([] { report("task "); }); }).join();
              platform::Queue::main()->async(terminateApplication);
          })
          == "awake launched task asked status 0");
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
          == "awake launched task asked answer 1001 status 0");
}

TEST_CASE("Closing the last window terminates the application, and an alert that closes then does not ask again")
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
          == "awake launched asked answer 1000 status 0");
}
