#pragma once

#include "agent/BackupStatus.h"
#include "agent/Notice.h"
#include "platform/PropertyList.h"

#include <map>
#include <optional>

namespace agent {

// What is remembered of one session to the next, so that nobody is told of the same trouble again and again.
struct NoticeMemory {
    struct Told {
        scheduling::Instant at = 0;
        std::optional<scheduling::Instant> event; // the notice's
        bool operator==(const Told&) const = default;
    };

    std::map<Cause, Told> told;
    bool wasOff = false;
    // When backups were seen switched on; nullopt when they were on all the time.
    std::optional<scheduling::Instant> onSince;

    // Takes over what a status says of them being on, and lets nothing lie in the future of its clock.
    void observe(const BackupStatus& status);
    void tell(const Notice& notice, scheduling::Instant now);

    platform::Dictionary dictionary() const;
    // What is missing or senseless is not remembered.
    static NoticeMemory inDictionary(const platform::Dictionary& dictionary);

    bool operator==(const NoticeMemory&) const = default;
};

} // namespace agent
