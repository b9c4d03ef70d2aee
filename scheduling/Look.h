#pragma once

#include "scheduling/Instant.h"
#include "scheduling/Reasons.h"

#include <optional>
#include <string_view>
#include <vector>

namespace scheduling {

// A calendar moment that went by without a backup, or more than five of them told as one.
struct Missed {
    Instant due = 0; // the last of them
    std::int64_t count = 1;
    Reasons reasons; // those that held when its time was over
    bool operator==(const Missed&) const = default;
};

// What a look at the schedule found, in the order in which it is told.
struct Look {
    std::vector<Missed> missed;  // oldest first
    std::optional<Instant> due;  // of a backup that is due now, the earliest
    Reasons reasons;             // what stands in its way
    bool blockedAnew = false;    // it is due, and the reasons are others than at the look before
    std::optional<Instant> next; // look again at this instant of the clock, if nothing happens before

    // Due and nothing in the way: start a backup, and tell the scheduler with started().
    bool shouldStart() const { return due && reasons.empty(); }
};

// How things stand, for a person.
enum class State { Off, Waiting, Blocked, Running };

struct Status {
    State state = State::Off;
    std::optional<Instant> due; // now or to come; nullopt when it is not known
    Reasons reasons;            // what stands in the way of a backup that is due
};

const char* stateName(State state);                     // "off", "waiting", "blocked", "running"
std::optional<State> stateNamed(std::string_view name); // nothing for any other

} // namespace scheduling
