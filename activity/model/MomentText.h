#pragma once

#include "platform/DateFormat.h"
#include "scheduling/LocalClock.h"

#include <optional>
#include <string>

// Moments as a person says them, in the user's language and in a zone: "Today, 09:00", "Monday, 09:00", and with the
// date where no day of the week would do.
class MomentText {
public:
    // `zone` is an IANA name; times are UTC's in a zone that the system does not know.
    MomentText(const std::string& zone, scheduling::Instant now);

    std::string text(scheduling::Instant moment);
    // The time of day alone for a moment of that day, otherwise with its date.
    std::string textOnDayOf(scheduling::Instant moment, scheduling::Instant day);
    // "3 minutes"
    static std::string length(std::int64_t seconds);

    // When "Today" becomes "Yesterday".
    scheduling::Instant midnight() const;

private:
    scheduling::LocalClock _clock;
    scheduling::LocalDay _today;
    platform::DateFormat _time;
    platform::DateFormat _dateAndTime;
};
