#include "platform/ui/Alert.h"

#include "platform/Localization.h"
#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/ViewNative.h"
#include "platform/macos/ui/WindowNative.h"

namespace platform::ui {

namespace {

static_assert(int(AlertStyle::Warning) == NSAlertStyleWarning && int(AlertStyle::Critical) == NSAlertStyleCritical);
static_assert(Alert::FirstButtonReturn == NSAlertFirstButtonReturn);
static_assert(Alert::Stop == NSModalResponseStop && Alert::Abort == NSModalResponseAbort);

constexpr unsigned short escapeKey = 53;

// Escape presses the button titled "Cancel", which the system knows by its English title alone. Without one it ends the
// alert by this; nil where there is such a button. To be removed when the alert is answered.
id monitorOfEscape(NSAlert* alert, void (^end)())
{
    NSString* const cancel = foundation::string(localizedString("Cancel"));
    for (NSButton* const button in alert.buttons) {
        if ([button.title isEqualToString:cancel]) {
            button.keyEquivalent = @"\033";
            return nil;
        }
    }
    NSWindow* const window = alert.window;
    return [NSEvent addLocalMonitorForEventsMatchingMask:NSEventMaskKeyDown
                                                 handler:^NSEvent*(NSEvent* event) {
                                                     if (event.window != window || event.keyCode != escapeKey)
                                                         return event;
                                                     end();
                                                     return nil;
                                                 }];
}

void removeMonitor(id monitor)
{
    if (monitor)
        [NSEvent removeMonitor:monitor];
}

// Of its accessory, which others still have.
void letGo(NSAlert* alert)
{
    NSView* const accessory = alert.accessoryView;
    alert.accessoryView = nil;
    [accessory removeFromSuperview];
}

} // namespace

struct Alert::Native {
    NSAlert* alert = [[NSAlert alloc] init];
    std::shared_ptr<View> accessoryView;
};

Alert::Alert() : _native(std::make_unique<Native>()) { }

Alert::~Alert() = default;
Alert::Alert(Alert&&) noexcept = default;
Alert& Alert::operator=(Alert&&) noexcept = default;

void Alert::setStyle(AlertStyle style)
{
    _native->alert.alertStyle = static_cast<NSAlertStyle>(style);
}

void Alert::setMessageText(const std::string& text)
{
    _native->alert.messageText = foundation::string(text);
}

void Alert::setInformativeText(const std::string& text)
{
    _native->alert.informativeText = foundation::string(text);
}

void Alert::addButton(const std::string& title)
{
    [_native->alert addButtonWithTitle:foundation::string(title)];
}

void Alert::setAccessoryView(const std::shared_ptr<View>& view)
{
    _native->accessoryView = view;
    NSView* const accessory = view ? view->native().view : nil;
    accessory.translatesAutoresizingMaskIntoConstraints = YES; // an alert goes by frames
    if (view)
        view->sizeToFit();
    _native->alert.accessoryView = accessory;
}

int Alert::runModal()
{
    const id monitor = monitorOfEscape(_native->alert, ^{ [NSApp stopModalWithCode:NSModalResponseStop]; });
    const NSModalResponse response = [_native->alert runModal];
    removeMonitor(monitor);
    letGo(_native->alert);
    return static_cast<int>(response);
}

void Alert::beginSheet(const std::shared_ptr<Window>& window, std::function<void(int)> completion)
{
    NSAlert* const alert = _native->alert;
    const auto accessory = _native->accessoryView;
    NSWindow* const parent = window->native().window;
    const id monitor = monitorOfEscape(alert, ^{ [parent endSheet:alert.window returnCode:NSModalResponseStop]; });
    [_native->alert beginSheetModalForWindow:parent
                           completionHandler:^(NSModalResponse response) {
                               removeMonitor(monitor);
                               if (accessory)
                                   letGo(alert);
                               if (!completion)
                                   return;
                               // Later, so that the completion finds the window free for another sheet.
                               dispatch_async(dispatch_get_main_queue(), ^{ completion(static_cast<int>(response)); });
                           }];
}

} // namespace platform::ui
