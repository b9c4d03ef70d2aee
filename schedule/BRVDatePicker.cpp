#include "schedule/BRVDatePicker.h"

#include "version/ZRKSystemVersionManager.h"

namespace {

bool needsCorrection()
{
    return !ZRKSystemVersionManager::sharedManager().runningAtLeast(0);
}

} // namespace

double BRVDatePicker::baselineOffsetFromBottom(double inherited)
{
    return needsCorrection() ? inherited + 6 : inherited;
}

double BRVDatePicker::intrinsicContentHeight(double inherited)
{
    return needsCorrection() ? inherited + 2 : inherited;
}

void BRVDatePicker::correctLayout(platform::ui::DatePicker& picker)
{
    if (needsCorrection())
        picker.setLayoutCorrection(baselineOffsetFromBottom(0), intrinsicContentHeight(0));
}
