#pragma once

#import <AppKit/AppKit.h>

namespace platform::ui {

// What assistive tools call a view; nil for what the platform makes of it.
NSString* accessibilityLabel(NSView* view);
void setAccessibilityLabel(NSView* view, NSString* label);

} // namespace platform::ui
