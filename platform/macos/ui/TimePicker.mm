#include "platform/macos/ui/TimePicker.h"

@implementation BRVTimePicker {
    CGFloat _baselineCorrection;
    CGFloat _heightCorrection;
}

+ (instancetype)timePicker
{
    BRVTimePicker* const picker = [[self alloc] initWithFrame:NSMakeRect(0, 0, 100, 20)];
    picker.datePickerStyle = NSDatePickerStyleTextFieldAndStepper;
    picker.datePickerElements = NSDatePickerElementFlagHourMinute;
    picker.drawsBackground = YES;
    return picker;
}

- (void)setBaselineCorrection:(CGFloat)baseline heightCorrection:(CGFloat)height
{
    _baselineCorrection = baseline;
    _heightCorrection = height;
    [self invalidateIntrinsicContentSize];
}

- (CGFloat)baselineOffsetFromBottom
{
    return super.baselineOffsetFromBottom + _baselineCorrection;
}

- (NSSize)intrinsicContentSize
{
    NSSize size = super.intrinsicContentSize;
    size.height += _heightCorrection;
    return size;
}

@end
