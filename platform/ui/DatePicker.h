#pragma once

#include "platform/ui/Control.h"

namespace platform::ui {

struct TimeOfDay {
    int hour = 0;   // 0 to 23
    int minute = 0; // 0 to 59
    bool operator==(const TimeOfDay&) const = default;
};

// A picker of the hour and minute in the user's calendar.
class DatePicker : public Control {
public:
    explicit DatePicker(std::unique_ptr<Native> native);

    TimeOfDay timeOfDay() const;
    void setTimeOfDay(TimeOfDay time);
};

} // namespace platform::ui
