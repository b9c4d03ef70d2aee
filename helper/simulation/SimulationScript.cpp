#include "helper/simulation/SimulationScript.h"

#include <array>
#include <cmath>

namespace helper {

using platform::Dictionary;
using platform::PropertyList;
using scheduling::Instant;

namespace {

using Type = PropertyList::Type;

template <class T>
using Read = std::expected<T, std::string>;

constexpr double referenceDate = 978'307'200; // 2001-01-01, in seconds since 1970

std::unexpected<std::string> faultOf(const std::string& key, const char* what)
{
    return std::unexpected("The simulation's '" + key + "' " + what + ".");
}

bool isRepresentable(Instant instant)
{
    return instant >= scheduling::earliestInstant && instant <= scheduling::latestInstant;
}

Read<std::optional<Instant>> readDate(const Dictionary& dictionary, const char* key)
{
    const PropertyList* value = dictionary.find(key);
    if (!value)
        return std::nullopt;
    if (!value->date())
        return faultOf(key, "is no date");
    const double seconds = std::floor(value->date()->secondsSinceReferenceDate + referenceDate);
    if (!(seconds >= static_cast<double>(scheduling::earliestInstant)
          && seconds <= static_cast<double>(scheduling::latestInstant)))
        return faultOf(key, "is no date of the years 1 to 9999");
    return static_cast<Instant>(seconds);
}

Read<Instant> readRequiredDate(const Dictionary& dictionary, const char* key)
{
    const auto date = readDate(dictionary, key);
    if (!date)
        return std::unexpected(date.error());
    if (!*date)
        return faultOf(key, "is missing");
    return **date;
}

Read<std::int64_t> integerOf(const PropertyList& value, const std::string& key)
{
    if (value.type() != Type::Integer)
        return faultOf(key, "is no integer");
    return value.integerValue();
}

Read<platform::TimeZone> zoneOf(const PropertyList* value)
{
    if (!value || !value->string())
        return faultOf("Zone", value ? "is no string" : "is missing");
    auto zone = platform::TimeZone::named(*value->string());
    if (!zone)
        return faultOf("Zone", "is unknown");
    return std::move(*zone);
}

Read<ConditionChanges> conditionsOf(const PropertyList* value, const char* key)
{
    ConditionChanges changes;
    if (!value)
        return changes;
    if (!value->dictionary())
        return faultOf(key, "is no dictionary");
    const std::array<std::pair<const char*, std::optional<bool>*>, 6> known{{
        {"Battery", &changes.battery},
        {"Passive", &changes.passive},
        {"SleepPreventers", &changes.sleepPreventers},
        {"Wired", &changes.wired},
        {"InUse", &changes.inUse},
        {"HasBattery", &changes.hasBattery},
    }};
    for (const auto& [name, place] : known) {
        const PropertyList* condition = value->dictionary()->find(name);
        if (condition && condition->type() != Type::Boolean)
            return faultOf(name, "is no boolean");
        if (condition)
            *place = condition->boolValue();
    }
    return changes;
}

Read<decltype(SimulationEvent::what)> happeningOf(const std::string& key, const PropertyList& value)
{
    if (key == "Set")
        return conditionsOf(&value, "Set");
    if (key == "Zone")
        return zoneOf(&value);
    if (key == "Asleep") {
        if (value.type() != Type::Boolean)
            return faultOf(key, "is no boolean");
        return SimulationEvent::Sleep{value.boolValue()};
    }
    if (key == "ClockBy") {
        const auto seconds = integerOf(value, key);
        if (!seconds)
            return std::unexpected(seconds.error());
        return SimulationEvent::ClockStep{*seconds};
    }
    if (!value.dictionary())
        return faultOf(key, "is no dictionary");
    return *value.dictionary();
}

Read<SimulationEvent> eventOf(const PropertyList& value)
{
    const Dictionary* dictionary = value.dictionary();
    if (!dictionary)
        return faultOf("Events", "hold something that is no dictionary");
    const PropertyList* at = dictionary->find("At");
    if (!at)
        return faultOf("Events", "hold one without 'At'");
    const auto time = integerOf(*at, "At");
    if (!time)
        return std::unexpected(time.error());
    std::optional<SimulationEvent> event;
    for (const char* key : {"Set", "Zone", "Asleep", "ClockBy", "Apply"}) {
        const PropertyList* found = dictionary->find(key);
        if (!found)
            continue;
        if (event)
            return faultOf("Events", "hold one in which two things happen");
        auto what = happeningOf(key, *found);
        if (!what)
            return std::unexpected(std::move(what.error()));
        event = SimulationEvent{*time, std::move(*what)};
    }
    if (!event)
        return faultOf("Events", "hold one in which nothing happens");
    return std::move(*event);
}

Read<std::vector<SimulationEvent>> eventsOf(const Dictionary& dictionary)
{
    std::vector<SimulationEvent> events;
    const PropertyList* list = dictionary.find("Events");
    if (!list)
        return events;
    if (!list->array())
        return faultOf("Events", "are no array");
    std::int64_t latest = 0;
    for (const PropertyList& value : *list->array()) {
        auto event = eventOf(value);
        if (!event)
            return std::unexpected(std::move(event.error()));
        if (event->at < latest)
            return faultOf("Events", "are out of order");
        latest = event->at;
        events.push_back(std::move(*event));
    }
    return events;
}

Read<std::vector<bool>> resultsOf(const Dictionary& dictionary)
{
    std::vector<bool> results;
    const PropertyList* list = dictionary.find("Results");
    if (!list)
        return results;
    if (!list->array())
        return faultOf("Results", "are no array");
    for (const PropertyList& value : *list->array()) {
        if (value.type() != Type::Boolean)
            return faultOf("Results", "hold something that is no boolean");
        results.push_back(value.boolValue());
    }
    return results;
}

Read<std::int64_t> durationOf(const Dictionary& dictionary)
{
    const PropertyList* value = dictionary.find("Duration");
    if (!value)
        return 0;
    const auto seconds = integerOf(*value, "Duration");
    if (seconds && *seconds < 0)
        return faultOf("Duration", "is negative");
    return seconds;
}

// Whether the clock never leaves the years that can be told.
bool staysRepresentable(const SimulationScript& script)
{
    std::int64_t steps = 0;
    for (const SimulationEvent& event : script.events) {
        const auto* step = std::get_if<SimulationEvent::ClockStep>(&event.what);
        if (event.at > script.length || !step)
            continue;
        const Instant before = script.from + event.at + steps;
        Instant after = 0;
        if (!isRepresentable(before) || __builtin_add_overflow(before, step->seconds, &after)
            || !isRepresentable(after))
            return false;
        steps += step->seconds;
    }
    return isRepresentable(script.from + script.length + steps);
}

} // namespace

std::expected<SimulationScript, std::string> SimulationScript::fromPropertyList(const PropertyList& list)
{
    const Dictionary* dictionary = list.dictionary();
    if (!dictionary)
        return std::unexpected("The simulation is no dictionary.");
    const Dictionary* record = dictionary->dictionaryForKey("Record");
    if (!record)
        return faultOf("Record", dictionary->contains("Record") ? "is no dictionary" : "is missing");
    auto zone = zoneOf(dictionary->find("Zone"));
    if (!zone)
        return std::unexpected(std::move(zone.error()));
    SimulationScript script{.record = *record, .zone = std::move(*zone)};

    // Takes what was read, or keeps the first sentence about what could not be.
    std::optional<std::string> failure;
    const auto take = [&failure](auto& place, auto read) {
        if (read)
            place = std::move(*read);
        else if (!failure)
            failure = std::move(read.error());
    };
    Instant until = 0;
    take(script.from, readRequiredDate(*dictionary, "From"));
    take(until, readRequiredDate(*dictionary, "Until"));
    take(script.lastStart, readDate(*dictionary, "LastStart"));
    take(script.conditions, conditionsOf(dictionary->find("Conditions"), "Conditions"));
    take(script.duration, durationOf(*dictionary));
    take(script.results, resultsOf(*dictionary));
    take(script.events, eventsOf(*dictionary));
    if (failure)
        return std::unexpected(std::move(*failure));
    if (until < script.from)
        return faultOf("Until", "is before its 'From'");
    script.length = until - script.from;
    if (!staysRepresentable(script))
        return faultOf("Events", "set the clock outside the years 1 to 9999");
    return script;
}

} // namespace helper
