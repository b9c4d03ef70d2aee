#pragma once

#include "platform/Calendar.h"

// The clock on the wall. Main thread only.
namespace scripted::calendar {

inline constexpr platform::TimeOfDay usualTime{12, 34};

void setCurrentTimeOfDay(platform::TimeOfDay time);

} // namespace scripted::calendar
