#include "platform/ui/Application.h"

#include "platform/macos/ui/AboutPanel.h"
#include "platform/macos/ui/TerminationSignals.h"

#import <AppKit/AppKit.h>
#include <cstdlib>

namespace platform::ui {
using DelegateMaker = std::function<std::shared_ptr<ApplicationDelegate>()>;
} // namespace platform::ui

@interface BRVApplicationDelegate : NSObject <NSApplicationDelegate>
- (instancetype)initWithMaker:(const platform::ui::DelegateMaker&)maker;
@end

@implementation BRVApplicationDelegate {
    platform::ui::DelegateMaker _maker;
    std::shared_ptr<platform::ui::ApplicationDelegate> _delegate;
    BOOL _terminating;
}

- (instancetype)initWithMaker:(const platform::ui::DelegateMaker&)maker
{
    self = [super init];
    if (self)
        _maker = maker;
    return self;
}

- (void)applicationWillFinishLaunching:(NSNotification*)__unused notification
{
    _delegate = _maker();
    _delegate->awakeFromNib();
}

- (void)applicationDidFinishLaunching:(NSNotification*)__unused notification
{
    __weak BRVApplicationDelegate* const weakSelf = self;
    platform::ui::handleTerminationSignals([weakSelf] { [weakSelf endAtOnce]; });
    _delegate->applicationDidFinishLaunching();
}

// Nothing is restored that another program could have planted.
- (BOOL)applicationSupportsSecureRestorableState:(NSApplication*)__unused application
{
    return YES;
}

- (NSApplicationTerminateReply)applicationShouldTerminate:(NSApplication*)__unused sender
{
    if (_terminating)
        return NSTerminateNow; // the delegate is asking the user, and lets the application end whatever the answer is
    _terminating = YES;
    const bool terminates = !_delegate || _delegate->applicationShouldTerminate();
    _terminating = NO;
    return terminates ? NSTerminateNow : NSTerminateCancel;
}

// What is still being saved is finished first.
- (void)finish
{
    if (_delegate)
        _delegate->applicationWillTerminate();
    _delegate.reset();
}

// The process then ends without leaving the main function.
- (void)applicationWillTerminate:(NSNotification*)__unused notification
{
    [self finish];
}

- (void)endAtOnce
{
    [self finish];
    std::exit(EXIT_SUCCESS);
}

- (BOOL)applicationShouldTerminateAfterLastWindowClosed:(NSApplication*)__unused sender
{
    return _delegate && _delegate->applicationShouldTerminateAfterLastWindowClosed();
}

// The system's own flag counts minimised windows.
- (BOOL)applicationShouldHandleReopen:(NSApplication*)application hasVisibleWindows:(BOOL)__unused visible
{
    bool hasWindowInFront = false;
    for (NSWindow* const window in application.windows)
        hasWindowInFront = hasWindowInFront || (window.visible && window.canBecomeMainWindow);
    return !_delegate || !_delegate->applicationDidReopen(hasWindowInFront);
}

@end

namespace platform::ui {

int applicationMain(int argc, char** argv, const std::function<std::shared_ptr<ApplicationDelegate>()>& makeDelegate)
{
    // The application holds its delegate weakly. The system itself sees to it that there is only one application.
    static BRVApplicationDelegate* delegate = nil;
    @autoreleasepool {
        delegate = [[BRVApplicationDelegate alloc] initWithMaker:makeDelegate];
        NSApplication.sharedApplication.delegate = delegate;
    }
    return NSApplicationMain(argc, const_cast<const char**>(argv));
}

void terminateApplication()
{
    dispatch_async(dispatch_get_main_queue(), ^{ [NSApp terminate:nil]; });
}

void setAutomaticWindowTabbing(bool allowed)
{
    if (@available(macOS 10.12, *))
        NSWindow.allowsAutomaticWindowTabbing = allowed;
}

void orderFrontAboutPanel(const std::string& version, std::vector<std::shared_ptr<Button>> links)
{
    orderFrontPanelAboutVersion(version, std::move(links));
}

} // namespace platform::ui
