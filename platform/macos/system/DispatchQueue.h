#pragma once

#include "platform/Queue.h"

#include <dispatch/dispatch.h>

namespace platform {

// The queue behind ours; null stands for null.
dispatch_queue_t dispatchQueue(const std::shared_ptr<Queue>& queue);

} // namespace platform
