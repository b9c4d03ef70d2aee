#pragma once

#include "platform/ui/DatePicker.h"

// The pickers of the interface files, with two small corrections to their layout on systems before macOS 10.10.
class BRVDatePicker {
public:
    // What layouts use in place of the platform's own values. Points.
    static double baselineOffsetFromBottom(double inherited);
    static double intrinsicContentHeight(double inherited);

    static void correctLayout(platform::ui::DatePicker& picker);
};
