#include "schedule/model/EditorCapabilities.h"

EditorCapabilities EditorCapabilities::of(bool battery, const std::function<bool(unsigned)>& runningAtLeast)
{
    return {
        .battery = battery,
        .snapshots = runningAtLeast(3),
        .passiveCondition = runningAtLeast(0),
        .wiredNetworkCondition = runningAtLeast(4),
        .batterySetting = runningAtLeast(5),
    };
}
