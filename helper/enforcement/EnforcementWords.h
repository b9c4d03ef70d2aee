#pragma once

#include "helper/enforcement/Journal.h"
#include "scheduling/LocalClock.h"
#include "scheduling/Look.h"
#include "scheduling/Reasons.h"

#include <cstdint>
#include <optional>
#include <string>

namespace helper {

// What is told about backups, in sentences that end with a full stop, as entries of the journal. Times of day are those
// of the zone; on other days than today's the date stands before them.
class EnforcementWords {
public:
    EnforcementWords(const scheduling::LocalClock& clock, scheduling::Instant now) : _clock(clock), _now(now) { }

    // The backup that was due then; nullopt when somebody starts it by hand.
    JournalEntry started(std::optional<scheduling::Instant> due) const;
    // Without a status it did not come to its end.
    JournalEntry succeeded(std::int64_t seconds) const;
    JournalEntry failed(const std::string& why, std::optional<scheduling::Instant> nextAttempt) const;
    static std::string failureOf(std::optional<int> status);
    // The helper was not there when the moment was over.
    JournalEntry missed(const scheduling::Missed& missed, bool wasAbsent) const;
    JournalEntry blocked(scheduling::Instant due, const scheduling::Reasons& reasons) const;

private:
    std::string time(scheduling::Instant instant) const;

    const scheduling::LocalClock& _clock;
    scheduling::Instant _now;
};

} // namespace helper
