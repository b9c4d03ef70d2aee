#include "helper/simulation/SimulationScript.h"
#include "tests/scheduling/Story.h"

#include <cstdint>
#include <doctest/doctest.h>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

using helper::SimulationEvent;
using helper::SimulationScript;
using platform::Array;
using platform::Dictionary;
using platform::PropertyList;

namespace {

Dictionary scriptWith(const char* key, PropertyList value)
{
    auto script = Story(dailyRecord(9, 0)).script();
    script.set(key, std::move(value));
    return script;
}

// Why a script is refused; empty when it is taken.
std::string refusalOf(const PropertyList& script)
{
    const auto read = SimulationScript::fromPropertyList(script);
    return read ? "" : read.error();
}

std::string refusalWith(const char* key, PropertyList value)
{
    return refusalOf(scriptWith(key, std::move(value)));
}

std::string refusalWithout(const char* key)
{
    auto script = Story(dailyRecord(9, 0)).script();
    script.remove(key);
    return refusalOf(script);
}

std::string refusalOfEvent(const PropertyList& event)
{
    return refusalWith("Events", Array{event});
}

std::string refusalOfHappening(const char* key, PropertyList value)
{
    Dictionary event{{"At", 1}};
    event.set(key, std::move(value));
    return refusalOfEvent(event);
}

} // namespace

TEST_CASE("a script that lacks what it needs is refused with the key")
{
    CHECK(refusalOf(Story(dailyRecord(9, 0)).script()).empty());
    CHECK(refusalOf(Array()) == "The simulation is no dictionary.");
    for (const std::string key : {"Record", "Zone", "From", "Until"})
        CHECK(refusalWithout(key.c_str()) == "The simulation's '" + key + "' is missing.");
}

TEST_CASE("a script's value that is no such thing is refused with the key and what is wrong")
{
    CHECK(refusalWith("Record", 1) == "The simulation's 'Record' is no dictionary.");
    CHECK(refusalWith("Zone", 1) == "The simulation's 'Zone' is no string.");
    CHECK(refusalWith("Zone", "Nowhere") == "The simulation's 'Zone' is unknown.");
    for (const std::string key : {"From", "Until", "LastStart"}) {
        CHECK(refusalWith(key.c_str(), "2026-06-01") == "The simulation's '" + key + "' is no date.");
        for (const char* date : {"0001-01-01T00:00:00Z", "9999-12-31T23:59:59Z"}) {
            const double edge = dateOf(date).secondsSinceReferenceDate;
            CHECK_FALSE(refusalWith(key.c_str(), platform::Date{edge}).contains("1 to 9999"));
            CHECK(refusalWith(key.c_str(), platform::Date{edge + (edge < 0 ? -1 : 1)})
                  == "The simulation's '" + key + "' is no date of the years 1 to 9999.");
        }
    }
    CHECK(refusalWith("Until", dateOf("2026-05-31T23:59:59Z")) == "The simulation's 'Until' is before its 'From'.");
    CHECK(refusalWith("Until", dateOf("2026-06-01T00:00:00Z")).empty());
    CHECK(refusalWith("Conditions", true) == "The simulation's 'Conditions' is no dictionary.");
    for (const std::string name : {"Battery", "Passive", "SleepPreventers", "Wired", "InUse", "HasBattery"}) {
        Dictionary conditions;
        conditions.set(name, 1);
        CHECK(refusalWith("Conditions", conditions) == "The simulation's '" + name + "' is no boolean.");
        conditions.set(name, true);
        CHECK(refusalWith("Conditions", conditions).empty());
    }
    CHECK(refusalWith("Duration", 1.5) == "The simulation's 'Duration' is no integer.");
    CHECK(refusalWith("Duration", -1) == "The simulation's 'Duration' is negative.");
    CHECK(refusalWith("Duration", 0).empty());
    CHECK(refusalWith("Results", true) == "The simulation's 'Results' are no array.");
    CHECK(refusalWith("Results", Array{true, 1}) == "The simulation's 'Results' hold something that is no boolean.");
    CHECK(refusalWith("Events", true) == "The simulation's 'Events' are no array.");
}

TEST_CASE("an event that is none is refused with what is wrong")
{
    CHECK(refusalOfEvent(1) == "The simulation's 'Events' hold something that is no dictionary.");
    CHECK(refusalOfEvent(Dictionary{{"Asleep", true}}) == "The simulation's 'Events' hold one without 'At'.");
    CHECK(refusalOfEvent(Dictionary{{"At", true}, {"Asleep", true}}) == "The simulation's 'At' is no integer.");
    CHECK(refusalOfEvent(Dictionary{{"At", 1}}) == "The simulation's 'Events' hold one in which nothing happens.");
    CHECK(refusalOfEvent(Dictionary{{"At", 1}, {"Asleep", true}, {"ClockBy", 5}})
          == "The simulation's 'Events' hold one in which two things happen.");
    CHECK(refusalOfHappening("Set", true) == "The simulation's 'Set' is no dictionary.");
    CHECK(refusalOfHappening("Set", Dictionary{{"Wired", 0}}) == "The simulation's 'Wired' is no boolean.");
    CHECK(refusalOfHappening("Zone", true) == "The simulation's 'Zone' is no string.");
    CHECK(refusalOfHappening("Asleep", 1) == "The simulation's 'Asleep' is no boolean.");
    CHECK(refusalOfHappening("ClockBy", 1.5) == "The simulation's 'ClockBy' is no integer.");
    CHECK(refusalOfHappening("Apply", Array()) == "The simulation's 'Apply' is no dictionary.");
    CHECK(refusalOfHappening("ClockBy", std::int64_t(1) << 62)
          == "The simulation's 'Events' set the clock outside the years 1 to 9999.");
    const auto at = [](int time) { return Dictionary{{"At", time}, {"ClockBy", 1}}; };
    CHECK(refusalWith("Events", Array{at(0), at(2), at(2)}).empty());
    CHECK(refusalWith("Events", Array{at(2), at(1)}) == "The simulation's 'Events' are out of order.");
    CHECK(refusalWith("Events", Array{at(-1)}) == "The simulation's 'Events' are out of order.");
}

TEST_CASE("of several things that are wrong the first is told, in the order of the keys")
{
    auto script = scriptWith("Events", true);
    CHECK(refusalOf(script).contains("'Events'"));
    for (const char* key : {"Results", "Duration", "Conditions", "LastStart", "Until", "From", "Zone", "Record"}) {
        script.set(key, Dictionary{{"Battery", 1}});
        if (std::string_view(key) == "Record")
            script.set(key, 1);
        const std::string told = std::string_view(key) == "Conditions" ? "Battery" : key;
        CHECK(refusalOf(script).contains("'" + told + "'"));
    }
}

TEST_CASE("a script is read with all that it says")
{
    const auto script = Story(dailyRecord(9, 0))
                            .in("Asia/Kathmandu", "2026-06-01T00:00:00Z")
                            .lasting(100)
                            .lastStart("2026-05-31T00:00:00Z")
                            .backupsTake(60)
                            .results({true, false})
                            .first({{"Battery", true}, {"Wired", false}})
                            .set(1, "InUse", true)
                            .travel(2, "UTC")
                            .sleep(3, 4)
                            .setClockBy(5, -7)
                            .apply(6, dailyRecord(10, 0))
                            .script();
    const auto read = SimulationScript::fromPropertyList(script);
    REQUIRE(read);
    CHECK(read->record == dailyRecord(9, 0));
    CHECK(read->zone.name() == "Asia/Kathmandu");
    CHECK(read->from == instantOf("2026-06-01T00:00:00Z"));
    CHECK(read->length == 100);
    CHECK(read->lastStart == instantOf("2026-05-31T00:00:00Z"));
    CHECK(read->duration == 60);
    CHECK(read->results == std::vector<bool>{true, false});
    CHECK(read->conditions.battery == true);
    CHECK(read->conditions.wired == false);
    CHECK_FALSE((read->conditions.passive || read->conditions.sleepPreventers || read->conditions.inUse
                 || read->conditions.hasBattery));
    REQUIRE(read->events.size() == 6);
    for (int index = 0; index < 6; ++index)
        CHECK(read->events[static_cast<std::size_t>(index)].at == index + 1);
    CHECK(std::get<helper::ConditionChanges>(read->events[0].what).inUse == true);
    CHECK(std::get<platform::TimeZone>(read->events[1].what).name() == "UTC");
    CHECK(std::get<SimulationEvent::Sleep>(read->events[2].what).asleep);
    CHECK_FALSE(std::get<SimulationEvent::Sleep>(read->events[3].what).asleep);
    CHECK(std::get<SimulationEvent::ClockStep>(read->events[4].what).seconds == -7);
    CHECK(std::get<ScheduleSettings>(read->events[5].what) == dailyRecord(10, 0));

    auto fraction = script;
    fraction.set("From", platform::Date{dateOf("2026-06-01T00:00:00Z").secondsSinceReferenceDate + 0.75});
    CHECK(SimulationScript::fromPropertyList(fraction)->from == instantOf("2026-06-01T00:00:00Z"));
}
