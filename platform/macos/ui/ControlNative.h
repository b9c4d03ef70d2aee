#pragma once

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/ViewNative.h"
#include "platform/ui/Control.h"

#include <string>

// Receives what a control sends. It keeps nothing alive and may outlive the control.
@interface BRVActionTarget : NSObject
- (instancetype)initWithAction:(const platform::ui::Control::Action*)action;
- (void)invalidate;
- (void)performAction:(id)sender;
@end

namespace platform::ui {

struct ControlNative : View::Native {
    explicit ControlNative(NSView* theView);
    ~ControlNative() override;

    Control::Action action;
    BRVActionTarget* const target;
    ControlSize size = ControlSize::Regular;
};

// What a control's NSView is, or has inside it where that scrolls.
NSControl* controlOf(const View& view);

// A view's NSView as the class that its wrapper was made for.
template <class V>
V* nativeOf(const View& view)
{
    return static_cast<V*>(view.native().view);
}

inline ControlNative& controlNative(const View& view)
{
    return static_cast<ControlNative&>(view.native());
}

} // namespace platform::ui
