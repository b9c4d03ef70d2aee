#include "helper/enforcement/EnforcementWords.h"

#include "scheduling/InstantText.h"

#include <array>
#include <string_view>
#include <utility>

namespace helper {

using scheduling::Instant;
using scheduling::Reason;
using scheduling::Reasons;

namespace {

struct ReasonWords {
    Reason reason;
    const char* present;
    const char* past;
};

constexpr std::array reasonWords{
    ReasonWords{Reason::Suspended, "backups are suspended at this time of day",
                "backups were suspended at that time of day"},
    ReasonWords{Reason::Battery, "on battery power", "the computer was on battery power"},
    ReasonWords{Reason::Passive, "nobody is logged in at the computer, or its lid is closed",
                "nobody was logged in at the computer, or its lid was closed"},
    ReasonWords{Reason::SleepPreventers, "a program keeps the computer awake", "a program kept the computer awake"},
    ReasonWords{Reason::NotWired, "not on a wired network", "the computer was not on a wired network"},
    ReasonWords{Reason::Running, "a backup is running", "a backup was running"},
    ReasonWords{Reason::Maintenance, "an update or the uninstallation is at work",
                "an update or the uninstallation was at work"},
    ReasonWords{Reason::NoProgram, "no backup program is chosen, or it is not there",
                "no backup program was chosen, or it was not there"},
};

std::string joined(const Reasons& reasons, const char* ReasonWords::* words)
{
    std::string text;
    for (const auto& each : reasonWords) {
        if (reasons.has(each.reason))
            text += (text.empty() ? "" : "; ") + std::string(each.*words);
    }
    return text;
}

std::string lengthOf(std::int64_t seconds)
{
    const auto counted = [](std::int64_t count, const char* unit) {
        return std::to_string(count) + " " + unit + (count == 1 ? "" : "s");
    };
    if (seconds < scheduling::secondsPerMinute)
        return counted(seconds, "second");
    if (seconds < scheduling::secondsPerHour)
        return counted(seconds / scheduling::secondsPerMinute, "minute");
    const auto minutes = seconds % scheduling::secondsPerHour / scheduling::secondsPerMinute;
    return counted(seconds / scheduling::secondsPerHour, "hour")
        + (minutes > 0 ? " " + counted(minutes, "minute") : "");
}

} // namespace

std::string EnforcementWords::time(Instant instant) const
{
    const auto text = scheduling::localTextOfInstant(_clock, instant); // "2026-10-25T02:30:00+02:00"
    const bool isToday = _clock.dayAt(instant) == _clock.dayAt(_now);
    const auto timeOfDay = text.substr(11, 5);
    return isToday ? timeOfDay : text.substr(0, 10) + " " + timeOfDay;
}

JournalEntry EnforcementWords::started(std::optional<Instant> due) const
{
    return {.at = _now,
            .event = "start",
            .due = due,
            .count = {},
            .reasons = {},
            .succeeded = {},
            .text = due ? "Started the backup of " + time(*due) + "." : "Started a backup by hand."};
}

JournalEntry EnforcementWords::succeeded(std::int64_t seconds) const
{
    return {.at = _now,
            .event = "end",
            .due = {},
            .count = {},
            .reasons = {},
            .succeeded = true,
            .text = "The backup succeeded; it took " + lengthOf(std::max<std::int64_t>(seconds, 0)) + "."};
}

JournalEntry EnforcementWords::failed(const std::string& why, std::optional<Instant> nextAttempt) const
{
    const auto next = nextAttempt ? " Due again at " + time(*nextAttempt) + "." : "";
    return {.at = _now,
            .event = "end",
            .due = {},
            .count = {},
            .reasons = {},
            .succeeded = false,
            .text = "The backup failed: " + why + next};
}

std::string EnforcementWords::failureOf(std::optional<int> status)
{
    if (!status)
        return "it stopped before its end.";
    if (*status < 0)
        return "its program was ended by signal " + std::to_string(-*status) + ".";
    if (*status == 127)
        return "its program is not there.";
    if (*status == 126)
        return "its program cannot be run.";
    return "its program ended with status " + std::to_string(*status) + ".";
}

JournalEntry EnforcementWords::missed(const scheduling::Missed& missed, bool wasAbsent) const
{
    const auto what = missed.count > 1
        ? "Missed " + std::to_string(missed.count) + " backups, the last of them that of " + time(missed.due)
        : "Missed the backup of " + time(missed.due);
    const auto why = !missed.reasons.has(Reason::Asleep) ? joined(missed.reasons, &ReasonWords::past)
        : wasAbsent                                      ? "the computer was asleep or off"
                                                         : "the computer was asleep";
    return {.at = _now,
            .event = "missed",
            .due = missed.due,
            .count = missed.count > 1 ? std::optional(missed.count) : std::nullopt,
            .reasons = namesOf(missed.reasons),
            .succeeded = {},
            .text = what + (why.empty() ? "" : ": " + why) + "."};
}

JournalEntry EnforcementWords::blocked(Instant due, const Reasons& reasons) const
{
    return {.at = _now,
            .event = "blocked",
            .due = due,
            .count = {},
            .reasons = namesOf(reasons),
            .succeeded = {},
            .text = "Waiting to back up: " + joined(reasons, &ReasonWords::present) + "."};
}

} // namespace helper
