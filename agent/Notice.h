#pragma once

#include "scheduling/Instant.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace agent {

// Why the user is told of backups without asking.
enum class Cause {
    Failing, // the last three failed, or more
    Missed,  // the last three moments were missed, or more
    Stale,   // for a week none has succeeded
};
inline constexpr Cause everyCause[] = {Cause::Failing, Cause::Missed, Cause::Stale};

struct Notice {
    Cause cause = Cause::Failing;
    std::int64_t count = 0;           // failed backups, missed moments, or whole days without a backup
    std::vector<std::string> reasons; // by their names
    std::string failure;              // the journal's sentence
    // When that happened which it tells of; nullopt of a cause that time brings about.
    std::optional<scheduling::Instant> event;

    bool operator==(const Notice&) const = default;
};

} // namespace agent
