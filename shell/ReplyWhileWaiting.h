#pragma once

#include "messaging/BRVHelperMessager.h"

#include <cstdint>
#include <optional>

// The scheduler helper's reply to a message without payload or rights. A helper that takes long is waited for with a
// small window that says so; nullopt when the user closes it, or the application ends meanwhile. Main thread.
std::optional<BRVHelperMessager::Reply> replyWhileWaiting(std::int64_t message);
