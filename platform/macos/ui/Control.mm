#include "platform/ui/Control.h"

#include "platform/macos/ui/ControlNative.h"

@implementation BRVActionTarget {
    const platform::ui::Control::Action* _action;
}

- (instancetype)initWithAction:(const platform::ui::Control::Action*)action
{
    self = [super init];
    if (self)
        _action = action;
    return self;
}

- (void)invalidate
{
    _action = nullptr;
}

- (void)performAction:(id)__unused sender
{
    // The action may replace itself or let go of the control.
    const auto kept = _action ? *_action : platform::ui::Control::Action();
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

ControlNative::ControlNative(NSView* theView)
    : Native(theView),
      target([[BRVActionTarget alloc] initWithAction:&action])
{
    if (![theView isKindOfClass:NSControl.class])
        return;
    NSControl* const control = static_cast<NSControl*>(theView);
    control.target = target;
    control.action = @selector(performAction:);
}

ControlNative::~ControlNative()
{
    [target invalidate];
}

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

void Control::setAction(Action action)
{
    controlNative(*this).action = std::move(action);
}

} // namespace platform::ui
