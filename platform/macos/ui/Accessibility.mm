#include "platform/macos/ui/Accessibility.h"

namespace platform::ui {

namespace {

// A control's cell is what older systems let assistive tools see.
id accessibleObject(NSView* view)
{
    const id cell = [view isKindOfClass:NSControl.class] ? static_cast<NSControl*>(view).cell : nil;
    return cell ? cell : view;
}

} // namespace

// The calls of systems before 10.10.
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

NSString* accessibilityLabel(NSView* view)
{
    if (@available(macOS 10.10, *))
        return view.accessibilityLabel;
    return [accessibleObject(view) accessibilityAttributeValue:NSAccessibilityDescriptionAttribute];
}

void setAccessibilityLabel(NSView* view, NSString* label)
{
    if (@available(macOS 10.10, *))
        view.accessibilityLabel = label;
    else
        [accessibleObject(view) accessibilitySetOverrideValue:label forAttribute:NSAccessibilityDescriptionAttribute];
}

} // namespace platform::ui
