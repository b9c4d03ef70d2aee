#include "tests/scheduling/Story.h"

#include "helper/simulation/Simulation.h"
#include "platform/PropertyList.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <stdexcept>

using platform::Array;
using platform::Date;
using platform::Dictionary;
using platform::PropertyList;

namespace {

constexpr std::int64_t referenceDate = 978'307'200;

Date dateOfInstant(scheduling::Instant instant)
{
    return {static_cast<double>(instant - referenceDate)};
}

scheduling::Instant instantOfDate(const PropertyList& value)
{
    return static_cast<scheduling::Instant>(value.date()->secondsSinceReferenceDate) + referenceDate;
}

// The text of a field in a line of JSON as the simulation writes it; empty when it isn't there.
std::string fieldOf(const std::string& line, const std::string& name)
{
    const std::string start = "\"" + name + "\": ";
    const auto found = line.find(start);
    if (found == std::string::npos)
        return "";
    const auto from = found + start.size();
    const char opening = line[from];
    const auto until = opening == '"' ? line.find('"', from + 1)
        : opening == '['              ? line.find(']', from)
                                      : line.find_first_of(",}", from);
    const auto begin = opening == '"' || opening == '[' ? from + 1 : from;
    return line.substr(begin, until - begin);
}

std::string shortTime(const std::string& text)
{
    return text.size() < 19 ? "" : text.substr(5, 5) + " " + text.substr(11, 8);
}

std::string shortLine(const std::string& line)
{
    std::string text = shortTime(fieldOf(line, "local")) + " " + fieldOf(line, "event");
    if (const auto due = fieldOf(line, "due"); !due.empty())
        text += " " + shortTime(due);
    if (const auto count = fieldOf(line, "count"); !count.empty())
        text += " x" + count;
    auto reasons = fieldOf(line, "reasons");
    std::erase(reasons, '"');
    std::erase(reasons, ',');
    if (!reasons.empty())
        text += " " + reasons;
    if (const auto succeeded = fieldOf(line, "succeeded"); !succeeded.empty())
        text += succeeded == "true" ? " well" : " badly";
    return text;
}

} // namespace

scheduling::Instant instantOf(const char* text)
{
    int year = 0, hour = 0, minute = 0, second = 0;
    unsigned month = 0, day = 0;
    if (std::sscanf(text, "%d-%u-%uT%d:%d:%dZ", &year, &month, &day, &hour, &minute, &second) != 6)
        throw std::runtime_error(std::string("no instant: ") + text);
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    return std::chrono::sys_days(date).time_since_epoch().count() * days(1) + at(hour, minute, second);
}

Date dateOf(const char* text)
{
    return dateOfInstant(instantOf(text));
}

ScheduleSettings intervalRecord(const char* unit, PropertyList count)
{
    return {{"Backups", true}, {"BackupsMode", "Interval"}, {"Interval", Dictionary{{unit, std::move(count)}}}};
}

ScheduleSettings calendarRecord(Array entries, bool asap)
{
    return {
        {"Backups", true},
        {"BackupsMode", "CalendarIntervals"},
        {"CalendarIntervals", Dictionary{{"Intervals", std::move(entries)}, {"ASAP", asap}}},
    };
}

Dictionary entry(int hour, int minute)
{
    return {{"Hour", hour}, {"Minute", minute}};
}

ScheduleSettings dailyRecord(int hour, int minute, bool asap)
{
    return calendarRecord({entry(hour, minute)}, asap);
}

ScheduleSettings inactiveRecord()
{
    return {{"Backups", true}, {"BackupsMode", "WhenInactive"}};
}

ScheduleSettings with(ScheduleSettings record, const char* key, PropertyList value)
{
    record.set(key, std::move(value));
    return record;
}

ScheduleSettings suspendedBetween(ScheduleSettings record, int startHour, int startMinute, int endHour, int endMinute)
{
    record.set("Suspend", true);
    record.set(
        "SuspendSettings",
        Dictionary{
            {"StartHour", startHour}, {"StartMinute", startMinute}, {"EndHour", endHour}, {"EndMinute", endMinute}});
    return record;
}

Story::Story(const ScheduleSettings& record)
{
    _script.set("Record", record);
    in("UTC", "2026-06-01T00:00:00Z");
    lasting(days(1));
}

Story& Story::in(const char* zone, const char* from)
{
    _script.set("Zone", zone);
    _script.set("From", dateOf(from));
    return lasting(days(1));
}

Story& Story::lasting(std::int64_t seconds)
{
    _script.set("Until", dateOfInstant(instantOfDate(*_script.find("From")) + seconds));
    return *this;
}

Story& Story::lastStart(const char* date)
{
    _script.set("LastStart", dateOf(date));
    return *this;
}

Story& Story::backupsTake(std::int64_t seconds)
{
    _script.set("Duration", seconds);
    return *this;
}

Story& Story::results(std::initializer_list<bool> results)
{
    _script.set("Results", Array(results.begin(), results.end()));
    return *this;
}

Story& Story::first(const Dictionary& conditions)
{
    _script.set("Conditions", conditions);
    return *this;
}

Story& Story::event(std::int64_t time, const char* kind, PropertyList value)
{
    Array events;
    if (const auto* present = _script.arrayForKey("Events"))
        events = *present;
    const auto place = std::upper_bound(events.begin(), events.end(), time, [](std::int64_t one, const auto& other) {
        return one < other.dictionary()->integerForKey("At");
    });
    events.insert(place, Dictionary{{"At", time}, {kind, std::move(value)}});
    _script.set("Events", std::move(events));
    return *this;
}

Story& Story::set(std::int64_t time, const char* condition, bool value)
{
    return event(time, "Set", Dictionary{{condition, value}});
}

Story& Story::travel(std::int64_t time, const char* zone)
{
    return event(time, "Zone", zone);
}

Story& Story::sleep(std::int64_t from, std::int64_t until)
{
    return event(from, "Asleep", true).event(until, "Asleep", false);
}

Story& Story::setClockBy(std::int64_t time, std::int64_t seconds)
{
    return event(time, "ClockBy", seconds);
}

Story& Story::apply(std::int64_t time, const ScheduleSettings& record)
{
    return event(time, "Apply", record);
}

Story::Lines Story::printed() const
{
    auto script = helper::SimulationScript::fromPropertyList(_script);
    if (!script)
        throw std::runtime_error(script.error());
    Lines lines;
    helper::Simulation(std::move(*script), [&lines](const std::string& line) { lines.push_back(line); }).run();
    return lines;
}

Story::Lines Story::play() const
{
    Lines lines = printed();
    std::transform(lines.begin(), lines.end(), lines.begin(), shortLine);
    return lines;
}
