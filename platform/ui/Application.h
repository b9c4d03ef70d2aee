#pragma once

#include <functional>
#include <memory>

namespace platform::ui {

class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;
    virtual void awakeFromNib() = 0; // the interface is loaded
    virtual void applicationDidFinishLaunching() = 0;
    virtual bool applicationShouldTerminate() = 0;
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
};

// Runs the application's main loop: makes the delegate once the toolkit is up, tells it of the launch, serves the main
// queue and ends when the application terminates. The result is the process's exit status.
int applicationMain(int argc, char** argv, const std::function<std::shared_ptr<ApplicationDelegate>()>& makeDelegate);

// Ends the main loop after asking the delegate. Returns at once.
void terminateApplication();

void setAutomaticWindowTabbing(bool allowed);

} // namespace platform::ui
