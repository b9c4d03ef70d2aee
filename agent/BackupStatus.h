#pragma once

#include "platform/PropertyList.h"
#include "scheduling/Instant.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace agent {

// What the scheduler helper's status says about backups that are not made.
struct BackupStatus {
    scheduling::Instant now = 0;
    bool isOn = false;
    std::vector<std::string> reasons; // what stands in the way now, by their names

    std::optional<scheduling::Instant> lastSucceeded;
    std::optional<scheduling::Instant> lastEnd;
    std::int64_t failures = 0; // in a row
    std::string failure;       // the journal's sentence about the last of them

    std::int64_t missed = 0; // moments since a backup was started last
    std::optional<scheduling::Instant> lastMissed;
    std::vector<std::string> missedReasons; // of the last of them

    // Of a reply to BRVMessageGetStatus; nullopt when it is none.
    static std::optional<BackupStatus> inReply(const platform::Dictionary& reply);

    bool operator==(const BackupStatus&) const = default;
};

} // namespace agent
