#include "tests/platform/ScriptedCalendar.h"

namespace scripted::calendar {

namespace {

platform::TimeOfDay currentTime = usualTime;

} // namespace

void setCurrentTimeOfDay(platform::TimeOfDay time)
{
    currentTime = time;
}

} // namespace scripted::calendar

namespace platform {

TimeOfDay currentTimeOfDay()
{
    return scripted::calendar::currentTime;
}

} // namespace platform
