#pragma once

#include "platform/PropertyList.h"
#include "protocol/ScheduleSettings.h"
#include "scheduling/InstantDate.h"
#include "scheduling/JournalEntry.h"

#include <ctime>
#include <initializer_list>
#include <string>

// What a helper tells, for tests.
namespace told {

// "2026-10-25T00:30:00Z"
inline scheduling::Instant instant(const char* text)
{
    std::tm time{};
    ::strptime(text, "%Y-%m-%dT%H:%M:%SZ", &time);
    return ::timegm(&time);
}

inline platform::Date date(const char* text)
{
    return scheduling::dateOf(instant(text));
}

// A Saturday, the day before the clocks are put back in Berlin, 14:00 there.
inline constexpr const char* noon = "2026-10-24T12:00:00Z";

// On the schedule, with a program, nothing before and nothing to come.
inline platform::Dictionary reply()
{
    return {{"Now", date(noon)},
            {"Zone", "Europe/Berlin"},
            {"State", "waiting"},
            {"Reasons", platform::Array{}},
            {"Failures", 0},
            {"Program", "Borg"},
            {"Upcoming", platform::Array{}},
            {"Journal", platform::Array{}}};
}

inline platform::Dictionary replyWith(std::initializer_list<std::pair<const char*, platform::PropertyList>> values)
{
    auto made = reply();
    for (const auto& [key, value] : values)
        made.set(key, value);
    return made;
}

// Every day at these hours; without catching up, and not suspended.
inline ScheduleSettings dailyAt(std::initializer_list<int> hours)
{
    platform::Array entries;
    for (const int hour : hours)
        entries.emplace_back(platform::Dictionary{{"Hour", hour}});
    return {{"Backups", true},
            {"BackupsMode", "CalendarIntervals"},
            {"CalendarIntervals", platform::Dictionary{{"Intervals", entries}, {"ASAP", false}}},
            {"AllowBattery", true}};
}

inline ScheduleSettings every(const char* unit, int count)
{
    return {{"Backups", true},
            {"BackupsMode", "Interval"},
            {"Interval", platform::Dictionary{{unit, count}}},
            {"AllowBattery", true}};
}

inline ScheduleSettings with(ScheduleSettings record, const char* key, platform::PropertyList value)
{
    record.set(key, std::move(value));
    return record;
}

inline ScheduleSettings suspended(ScheduleSettings record, int startHour, int endHour)
{
    record.set("Suspend", true);
    record.set(
        "SuspendSettings",
        platform::Dictionary{{"StartHour", startHour}, {"StartMinute", 0}, {"EndHour", endHour}, {"EndMinute", 0}});
    return record;
}

} // namespace told
