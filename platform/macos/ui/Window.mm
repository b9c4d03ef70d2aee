#include "platform/ui/Window.h"

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/WindowNative.h"

#include <utility>

@interface BRVUndo : NSObject
- (instancetype)initWithTask:(std::function<void()>)task;
- (void)undo:(id)sender;
@end

@implementation BRVUndo {
    std::function<void()> _task;
}

- (instancetype)initWithTask:(std::function<void()>)task
{
    self = [super init];
    if (self)
        _task = std::move(task);
    return self;
}

- (void)undo:(id)__unused sender
{
    const auto task = std::exchange(_task, nullptr);
    // Later, so that the next one is registered as one to undo.
    dispatch_async(dispatch_get_main_queue(), ^{
        if (task)
            task();
    });
}

@end

namespace platform::ui {

Window::Window(std::unique_ptr<Native> native) : _native(std::move(native)) { }

Window::~Window()
{
    setCloseHandler(nullptr);
}

std::string Window::identifier() const
{
    return foundation::string(_native->window.identifier);
}

std::shared_ptr<View> Window::contentView() const
{
    return _native->contentView;
}

std::string Window::title() const
{
    return foundation::string(_native->window.title);
}

void Window::setTitle(const std::string& title)
{
    _native->window.title = foundation::string(title);
}

bool Window::isVisible() const
{
    return _native->window.visible || _native->window.miniaturized;
}

void Window::setAutorecalculatesKeyViewLoop(bool recalculates)
{
    _native->window.autorecalculatesKeyViewLoop = recalculates;
}

void Window::layoutIfNeeded()
{
    [_native->window layoutIfNeeded];
}

void Window::center()
{
    NSWindow* const window = _native->window;
    [window layoutIfNeeded];
    [window setContentSize:window.contentView.fittingSize];
    [window center];
}

void Window::setFrameAutosaveName(const std::string& name)
{
    NSString* const key = foundation::string(name);
    [_native->window setFrameUsingName:key];
    [_native->window setFrameAutosaveName:key];
}

void Window::setUndo(std::function<void()> undo)
{
    NSUndoManager* const manager = _native->window.undoManager;
    if (_native->undo)
        [manager removeAllActionsWithTarget:_native->undo];
    _native->undo = undo ? [[BRVUndo alloc] initWithTask:std::move(undo)] : nil;
    if (_native->undo)
        [manager registerUndoWithTarget:_native->undo selector:@selector(undo:) object:nil];
}

void Window::endEditing()
{
    NSWindow* const window = _native->window;
    NSResponder* focused = window.firstResponder;
    if ([focused isKindOfClass:NSText.class] && [static_cast<NSText*>(focused) isFieldEditor]) {
        const id field = static_cast<NSText*>(focused).delegate; // whose place the editor takes
        focused = [field isKindOfClass:NSResponder.class] ? field : nil;
    }
    if (![window makeFirstResponder:window])
        [window endEditingFor:nil];
    [window makeFirstResponder:focused];
}

void Window::makeKeyAndOrderFront()
{
    if (_native->window.miniaturized)
        [_native->window deminiaturize:nil];
    [_native->window makeKeyAndOrderFront:nil];
}

void Window::close()
{
    [_native->window close];
}

void Window::setCloseHandler(std::function<void()> handler)
{
    NSNotificationCenter* const center = NSNotificationCenter.defaultCenter;
    if (_native->closeObserver)
        [center removeObserver:_native->closeObserver];
    _native->closeObserver = handler ? [center addObserverForName:NSWindowWillCloseNotification
                                                           object:_native->window
                                                            queue:nil
                                                       usingBlock:^(NSNotification*) { handler(); }]
                                     : nil;
}

} // namespace platform::ui
