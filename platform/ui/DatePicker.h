#pragma once

#include "platform/Calendar.h"
#include "platform/ui/Control.h"

#include <memory>

namespace platform::ui {

using platform::TimeOfDay;

// A picker of the hour and minute in the user's calendar.
class DatePicker : public Control {
public:
    // A new one in no view, 100 by 20 points, that draws its background.
    static std::shared_ptr<DatePicker> create();

    explicit DatePicker(std::unique_ptr<Native> native);

    TimeOfDay timeOfDay() const;
    void setTimeOfDay(TimeOfDay time); // one that does not exist is ignored

    // Layouts take the picker's text for this much higher above its bottom, and the picker for this much higher, than
    // the platform says. Points; nothing at first.
    void setLayoutCorrection(double baselineOffsetFromBottom, double height);
};

} // namespace platform::ui
