#pragma once

#import <AppKit/AppKit.h>

namespace platform::ui {

// A text that is only looked at.
inline NSTextField* newLabel(NSString* text)
{
    NSTextField* const label = [[NSTextField alloc] initWithFrame:NSZeroRect];
    label.editable = NO;
    label.selectable = NO;
    label.bezeled = NO;
    label.drawsBackground = NO;
    label.stringValue = text;
    return label;
}

} // namespace platform::ui
