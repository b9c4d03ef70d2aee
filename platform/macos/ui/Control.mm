#include "platform/ui/Control.h"

#include "platform/macos/ui/ControlNative.h"

#import <objc/runtime.h>

namespace {

constexpr char targetKey = 0;

} // namespace

@implementation BRVActionTarget {
    platform::ui::Control::Action _action;
}

+ (BRVActionTarget*)targetOf:(NSView*)view
{
    BRVActionTarget* target = objc_getAssociatedObject(view, &targetKey);
    if (!target) {
        target = [[BRVActionTarget alloc] init];
        objc_setAssociatedObject(view, &targetKey, target, OBJC_ASSOCIATION_RETAIN);
    }
    return target;
}

- (void)setAction:(const platform::ui::Control::Action&)action
{
    _action = action;
}

- (void)performAction:(id)__unused sender
{
    // The action may replace itself or let go of the control.
    const auto kept = _action;
    if (kept)
        kept();
}

@end

namespace platform::ui {

namespace {

NSControlSize nativeSize(ControlSize size)
{
    switch (size) {
    case ControlSize::Small:
        return NSControlSizeSmall;
    case ControlSize::Large:
        if (@available(macOS 11.0, *))
            return NSControlSizeLarge;
        break;
    case ControlSize::Regular:
        break;
    }
    return NSControlSizeRegular;
}

} // namespace

NSControl* controlOf(const View& view)
{
    NSView* const native = view.native().view;
    NSView* const inside =
        [native isKindOfClass:NSScrollView.class] ? static_cast<NSScrollView*>(native).documentView : native;
    return static_cast<NSControl*>(inside);
}

bool Control::isEnabled() const
{
    return controlOf(*this).enabled;
}

void Control::setEnabled(bool enabled)
{
    controlOf(*this).enabled = enabled;
}

ControlSize Control::controlSize() const
{
    return controlNative(*this).size;
}

void Control::setControlSize(ControlSize size)
{
    controlNative(*this).size = size;
    NSControl* const control = controlOf(*this);
    control.cell.controlSize = nativeSize(size);
    control.font = [NSFont controlContentFontOfSize:[NSFont systemFontSizeForControlSize:nativeSize(size)]];
    [control invalidateIntrinsicContentSize];
}

// A control without an action sends nothing: in a text field Return is for the window's default button then.
void Control::setAction(Action action)
{
    NSView* const view = native().view;
    BRVActionTarget* const target = [BRVActionTarget targetOf:view];
    [target setAction:action];
    if (![view isKindOfClass:NSControl.class])
        return;
    NSControl* const control = static_cast<NSControl*>(view);
    control.target = action ? target : nil;
    control.action = action ? @selector(performAction:) : nullptr;
}

} // namespace platform::ui
