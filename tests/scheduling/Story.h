#pragma once

#include "helper/simulation/SimulationScript.h"
#include "scheduling/Instant.h"

#include <cstdint>
#include <doctest/doctest.h>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

// Seconds of a time of day, and of days.
constexpr std::int64_t at(int hour, int minute, int second = 0)
{
    return hour * 3'600 + minute * 60 + second;
}
constexpr std::int64_t days(int count)
{
    return count * 86'400LL;
}

// The instant of a text such as "2026-03-29T01:00:00Z".
scheduling::Instant instantOf(const char* text);
platform::Date dateOf(const char* text);

// Records that are on.
ScheduleSettings intervalRecord(const char* unit, platform::PropertyList count);
ScheduleSettings calendarRecord(platform::Array entries, bool asap = false);
ScheduleSettings dailyRecord(int hour, int minute, bool asap = false);
ScheduleSettings inactiveRecord();
ScheduleSettings with(ScheduleSettings record, const char* key, platform::PropertyList value);
ScheduleSettings suspendedBetween(ScheduleSettings record, int startHour, int startMinute, int endHour, int endMinute);
platform::Dictionary entry(int hour, int minute);

// A script, told step by step and played. It begins on Monday, 2026-06-01, at midnight in UTC and lasts a day, if
// nothing else is said.
class Story {
public:
    using Lines = std::vector<std::string>;

    explicit Story(const ScheduleSettings& record);

    Story& in(const char* zone, const char* from);
    Story& lasting(std::int64_t seconds);
    Story& lastStart(const char* date);
    Story& backupsTake(std::int64_t seconds);
    Story& results(std::initializer_list<bool> results);
    Story& first(const platform::Dictionary& conditions); // at the beginning

    // Events, by the seconds since the beginning.
    Story& set(std::int64_t time, const char* condition, bool value);
    Story& travel(std::int64_t time, const char* zone);
    Story& sleep(std::int64_t from, std::int64_t until);
    Story& setClockBy(std::int64_t time, std::int64_t seconds);
    Story& apply(std::int64_t time, const ScheduleSettings& record);

    const platform::Dictionary& script() const { return _script; }

    // What the simulation prints, one object a line.
    Lines printed() const;
    // The same in short: local date and time, event, due moment in UTC without its year, and what else is told, as in
    // "06-01 09:10:01 missed 06-01 09:00:00 battery".
    Lines play() const;

private:
    Story& event(std::int64_t time, const char* kind, platform::PropertyList value);

    platform::Dictionary _script;
};

template <>
struct doctest::StringMaker<Story::Lines> {
    static String convert(const Story::Lines& lines)
    {
        std::string text;
        for (const std::string& line : lines)
            text += "\n    " + line;
        return text.c_str();
    }
};
