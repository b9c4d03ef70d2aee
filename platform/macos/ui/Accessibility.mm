#include "platform/macos/ui/Accessibility.h"

namespace platform::ui {

namespace {

// What assistive tools see: the document of what scrolls.
NSView* accessibleView(NSView* view)
{
    NSView* const document =
        [view isKindOfClass:NSScrollView.class] ? static_cast<NSScrollView*>(view).documentView : nil;
    return document ? document : view;
}

// On older systems, of a control it is the cell.
id accessibleObject(NSView* view)
{
    const id cell = [view isKindOfClass:NSControl.class] ? static_cast<NSControl*>(view).cell : nil;
    return cell ? cell : view;
}

} // namespace

// The calls of systems before 10.10.
#pragma clang diagnostic ignored "-Wdeprecated-declarations"

NSString* accessibilityLabel(NSView* shown)
{
    NSView* const view = accessibleView(shown);
    if (@available(macOS 10.10, *))
        return view.accessibilityLabel;
    return [accessibleObject(view) accessibilityAttributeValue:NSAccessibilityDescriptionAttribute];
}

void setAccessibilityLabel(NSView* shown, NSString* label)
{
    NSView* const view = accessibleView(shown);
    if (@available(macOS 10.10, *))
        view.accessibilityLabel = label;
    else
        [accessibleObject(view) accessibilitySetOverrideValue:label forAttribute:NSAccessibilityDescriptionAttribute];
}

} // namespace platform::ui
