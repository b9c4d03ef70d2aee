#pragma once

#include "platform/macos/system/Foundation.h"
#include "platform/macos/ui/ViewNative.h"
#include "platform/ui/Control.h"

#include <string>

// Receives what a control sends. It lives as long as the NSView, which keeps it: a Control may come and go meanwhile.
@interface BRVActionTarget : NSObject
// The one of the view, made when it is first asked for.
+ (BRVActionTarget*)targetOf:(NSView*)view;
- (void)setAction:(const platform::ui::Control::Action&)action;
- (void)performAction:(id)sender;
@end

namespace platform::ui {

struct ControlNative : View::Native {
    using Native::Native;

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
