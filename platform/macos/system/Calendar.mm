#include "platform/Calendar.h"

#import <Foundation/Foundation.h>

namespace platform {

TimeOfDay currentTimeOfDay()
{
    @autoreleasepool {
        NSDateComponents* const parts = [NSCalendar.currentCalendar components:NSCalendarUnitHour | NSCalendarUnitMinute
                                                                      fromDate:[NSDate date]];
        return {static_cast<int>(parts.hour), static_cast<int>(parts.minute)};
    }
}

} // namespace platform
