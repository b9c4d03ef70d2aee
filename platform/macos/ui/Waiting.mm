#include "platform/ui/Waiting.h"

#include "platform/Localization.h"
#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/Label.h"

#import <AppKit/AppKit.h>
#include <memory>

@interface BRVWaitingPanel : NSObject
@property (nonatomic, readonly) BOOL isClosed;
- (instancetype)initWithText:(NSString*)text;
- (void)show;
- (void)close;
- (BOOL)takes:(NSEvent*)event;
@end

@implementation BRVWaitingPanel {
    NSPanel* _panel;
}

- (instancetype)initWithText:(NSString*)text
{
    self = [super init];
    if (!self)
        return nil;
    NSButton* const button = [[NSButton alloc] initWithFrame:NSZeroRect];
    button.bezelStyle = NSBezelStyleRounded;
    button.title = platform::foundation::string(platform::localizedString("Cancel"));
    button.keyEquivalent = @"\033";
    button.target = self;
    button.action = @selector(close);
    NSStackView* const column = [NSStackView stackViewWithViews:@[ platform::ui::newLabel(text), button ]];
    column.orientation = NSUserInterfaceLayoutOrientationVertical;
    column.alignment = NSLayoutAttributeTrailing;
    column.spacing = 16;
    column.edgeInsets = NSEdgeInsetsMake(20, 24, 20, 24);
    _panel = [[NSPanel alloc] initWithContentRect:NSZeroRect
                                        styleMask:NSWindowStyleMaskTitled
                                          backing:NSBackingStoreBuffered
                                            defer:YES];
    _panel.releasedWhenClosed = NO;
    _panel.contentView = column;
    [_panel setContentSize:column.fittingSize];
    return self;
}

- (void)show
{
    [_panel center];
    [_panel makeKeyAndOrderFront:nil];
}

- (void)close
{
    _isClosed = YES;
    [_panel close];
}

// What the user does to other windows waits for them.
- (BOOL)takes:(NSEvent*)event
{
    return _panel.visible && event.window == _panel;
}

@end

namespace platform::ui {

namespace {

constexpr NSTimeInterval patience = 3;
constexpr NSTimeInterval turn = 0.05;

} // namespace

bool waitFor(const std::string& text, std::function<void()> work)
{
    @autoreleasepool {
        const auto isDone = std::make_shared<bool>(false); // main thread only
        dispatch_async(dispatch_get_global_queue(DISPATCH_QUEUE_PRIORITY_DEFAULT, 0), ^{
            work();
            dispatch_async(dispatch_get_main_queue(), ^{ *isDone = true; });
        });
        BRVWaitingPanel* const panel = [[BRVWaitingPanel alloc] initWithText:foundation::string(text)];
        NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:patience];
        bool isShown = false;
        while (!*isDone && !panel.isClosed) {
            if (!isShown && limit.timeIntervalSinceNow < 0) {
                isShown = true;
                [panel show];
            }
            NSDate* const until = [NSDate dateWithTimeIntervalSinceNow:turn];
            if (!isShown) {
                [NSRunLoop.mainRunLoop runMode:NSDefaultRunLoopMode beforeDate:until];
                continue;
            }
            NSEvent* const event = [NSApp nextEventMatchingMask:NSEventMaskAny
                                                      untilDate:until
                                                         inMode:NSDefaultRunLoopMode
                                                        dequeue:YES];
            if (event && [panel takes:event])
                [NSApp sendEvent:event];
        }
        const bool wasClosed = panel.isClosed;
        [panel close];
        return *isDone && !wasClosed;
    }
}

} // namespace platform::ui
