#pragma once

#include "scheduling/Instant.h"

#include <cstddef>
#include <vector>

namespace scheduling {

class Scheduler;

// A due moment to come, for showing it.
struct Upcoming {
    Instant at = 0;
    bool suspended = false; // lies in the daily suspension
    bool shifted = false;   // a gap of the local time moved it
    bool repeated = false;  // its local time comes twice
    bool operator==(const Upcoming&) const = default;
};

// The schedule's next moments after now, earliest first and at most so many, as if each backup started in its moment
// and took no time. No retries; when inactive at most one, since nobody knows how the computer will be used.
std::vector<Upcoming> upcomingMoments(const Scheduler& scheduler, Now now, std::size_t count);

} // namespace scheduling
