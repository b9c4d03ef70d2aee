// Opens the console in an application of its own and ends some milliseconds later, as a user who quits does, whatever
// the log tool does meanwhile.

#include "diagnostics/console/BRVConsoleController.h"
#include "platform/ui/Application.h"

#include <cstdio>
#include <cstdlib>
#include <QTimer>

namespace {

class ProbeDelegate : public platform::ui::ApplicationDelegate {
public:
    explicit ProbeDelegate(int milliseconds) : _milliseconds(milliseconds) { }

    void awakeFromNib() override { }
    void applicationDidFinishLaunching() override
    {
        _console->showWindow();
        QTimer::singleShot(_milliseconds, [] { platform::ui::terminateApplication(); });
    }
    bool applicationDidReopen(bool) override { return false; }
    bool applicationShouldTerminate() override { return true; }
    bool applicationShouldTerminateAfterLastWindowClosed() override { return true; }

private:
    int _milliseconds;
    std::shared_ptr<BRVConsoleController> _console = BRVConsoleController::create();
};

} // namespace

int main(int argc, char** argv)
{
    const int milliseconds = argc > 1 ? std::atoi(argv[1]) : 0;
    const int status = platform::ui::applicationMain(
        argc, argv, [milliseconds] { return std::make_shared<ProbeDelegate>(milliseconds); });
    std::printf("ended with %d\n", status);
    return status;
}
