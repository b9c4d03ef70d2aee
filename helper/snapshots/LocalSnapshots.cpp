#include "helper/snapshots/LocalSnapshots.h"

#include "platform/DistributedNotifications.h"

namespace helper {

bool tellOfSnapshots()
{
    return platform::postDistributedNotification("com.zerkolin.brevane.snapshot");
}

} // namespace helper
