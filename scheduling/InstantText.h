#pragma once

#include "scheduling/LocalClock.h"

#include <string>

namespace scheduling {

// "2026-10-25T00:30:00Z"
std::string textOfInstant(Instant instant);

// "2026-10-25T02:30:00+02:00", in UTC "+00:00"; an offset that is no whole minute ends in its seconds.
std::string localTextOfInstant(const LocalClock& clock, Instant instant);

} // namespace scheduling
