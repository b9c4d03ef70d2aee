#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace platform::ui {

class Button;

class ApplicationDelegate {
public:
    virtual ~ApplicationDelegate() = default;
    virtual void awakeFromNib() = 0; // the interface is loaded
    virtual void applicationDidFinishLaunching() = 0;
    virtual bool applicationShouldTerminate() = 0;
    virtual bool applicationShouldTerminateAfterLastWindowClosed() = 0;
    // Once before the main loop ends, also when the system ends the application and nobody is asked.
    virtual void applicationWillTerminate() { }
    // The user started the application once more; that start came to nothing but this. The system may have brought
    // windows of the application forward by itself, one at least that is not minimised. False when nothing was done, so
    // that the system does what it does for such an application.
    virtual bool applicationDidReopen(bool hasWindowInFront) = 0;
    // The user, or another program for him, wants to see this window; a name that says nothing is to be ignored. After
    // the launch, or after the call above.
    virtual void applicationShouldShow(const std::string& /*window*/) { }
};

// Runs the application's main loop: makes the delegate once the toolkit is up, tells it of the launch, serves the main
// queue and ends when the application terminates. The result is the process's exit status. While an application of the
// user runs on the same display, a second one only tells it so and ends at once with 0. The arguments "--show NAME", on
// systems whose programs have arguments, name a window for applicationShouldShow.
int applicationMain(int argc, char** argv, const std::function<std::shared_ptr<ApplicationDelegate>()>& makeDelegate);

// Ends the main loop after asking the delegate. Returns at once.
void terminateApplication();

void setAutomaticWindowTabbing(bool allowed);

// The panel that tells the application's name and this version, above these links; shows the same one again.
void orderFrontAboutPanel(const std::string& version, std::vector<std::shared_ptr<Button>> links);

} // namespace platform::ui
