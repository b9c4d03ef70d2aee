#include "platform/ui/DatePicker.h"

#include "platform/macos/ui/ControlNative.h"
#include "platform/macos/ui/TimePicker.h"

namespace platform::ui {

std::shared_ptr<DatePicker> DatePicker::create()
{
    return wrapView<DatePicker, ControlNative>([BRVTimePicker timePicker]);
}

DatePicker::DatePicker(std::unique_ptr<Native> native) : Control(std::move(native)) { }

TimeOfDay DatePicker::timeOfDay() const
{
    NSDate* const date = nativeOf<NSDatePicker>(*this).dateValue;
    NSDateComponents* const parts = [NSCalendar.currentCalendar components:NSCalendarUnitHour | NSCalendarUnitMinute
                                                                  fromDate:date];
    return {.hour = static_cast<int>(parts.hour), .minute = static_cast<int>(parts.minute)};
}

void DatePicker::setTimeOfDay(TimeOfDay time)
{
    if (time.hour < 0 || time.hour > 23 || time.minute < 0 || time.minute > 59)
        return;
    NSDateComponents* const parts = [[NSDateComponents alloc] init];
    parts.hour = time.hour;
    parts.minute = time.minute;
    if (NSDate* const date = [NSCalendar.currentCalendar dateFromComponents:parts])
        nativeOf<NSDatePicker>(*this).dateValue = date;
}

void DatePicker::setLayoutCorrection(double baselineOffsetFromBottom, double height)
{
    [nativeOf<BRVTimePicker>(*this) setBaselineCorrection:baselineOffsetFromBottom heightCorrection:height];
}

} // namespace platform::ui
