#pragma once

#import <AppKit/AppKit.h>

// A date picker of the hour and minute whose layout can be corrected.
@interface BRVTimePicker : NSDatePicker
// Frame 0, 0, 100 wide, 20 high.
+ (instancetype)timePicker;
- (void)setBaselineCorrection:(CGFloat)baseline heightCorrection:(CGFloat)height;
@end
