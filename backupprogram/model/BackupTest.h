#pragma once

#include "platform/PropertyList.h"
#include "scheduling/Instant.h"

#include <optional>
#include <string>

// How a backup ended that was made to try the program.
struct BackupTestOutcome {
    bool succeeded = false;
    std::string text; // the journal's sentence on it, in English; may be empty
    bool operator==(const BackupTestOutcome&) const = default;
};

// Follows the backup that was started by hand, by what the scheduler helper tells of its status. Two backups never run
// at once, so the first one that is seen is the one.
class BackupTest {
public:
    // A status (BackupStatusKey) from after the start. The outcome, once the backup has ended.
    std::optional<BackupTestOutcome> outcomeIn(const platform::Dictionary& status);

private:
    std::optional<scheduling::Instant> _start; // of the backup, once it is known
};
