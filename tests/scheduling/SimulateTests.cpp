#include "platform/PropertyListCoding.h"
#include "tests/scheduling/Story.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryDirectory.h"

#include <algorithm>
#include <doctest/doctest.h>

using platform::Array;
using platform::Dictionary;
using platform::PropertyList;

namespace {

struct Outcome {
    int status;
    std::string output;
    std::string errors;
};

Outcome simulateFile(const std::string& content)
{
    TemporaryDirectory folder;
    const auto file = folder.write("scenario.plist", content);
    ChildProcess output({BREVANE_SCHEDULER_HELPER, "--simulate", file});
    const auto text = output.readAll();
    const int status = output.wait();
    ChildProcess errors(
        {"/bin/sh", "-c", R"(exec "$0" --simulate "$1" 2>&1 >/dev/null)", BREVANE_SCHEDULER_HELPER, file});
    return {status, text, errors.readAll()};
}

Outcome simulate(const PropertyList& script)
{
    const auto bytes = *platform::binaryPropertyList(script);
    return simulateFile({bytes.begin(), bytes.end()});
}

bool isRefused(const PropertyList& script)
{
    const auto outcome = simulate(script);
    return outcome.status == 64 && outcome.output.empty() && outcome.errors.size() > 2
        && outcome.errors.ends_with(".\n") && std::count(outcome.errors.begin(), outcome.errors.end(), '\n') == 1;
}

Dictionary script()
{
    return Story(dailyRecord(9, 0)).first({{"Battery", true}}).script();
}

Dictionary changed(const char* key, PropertyList value)
{
    auto changed = script();
    changed.set(key, std::move(value));
    return changed;
}

Dictionary without(const char* key)
{
    auto less = script();
    less.remove(key);
    return less;
}

Dictionary withEvent(const Dictionary& event)
{
    return changed("Events", Array{event});
}

} // namespace

TEST_CASE("the simulation prints an object a line")
{
    auto story = Story(dailyRecord(2, 30)).in("Europe/Berlin", "2026-10-24T12:00:00Z").backupsTake(60).results({false});
    CHECK(
        simulate(story.lasting(at(12, 32)).script()).output
        == R"({"elapsed": 45000, "clock": "2026-10-25T00:30:00Z", "local": "2026-10-25T02:30:00+02:00", "event": "start", "due": "2026-10-25T00:30:00Z"})"
           "\n"
           R"({"elapsed": 45060, "clock": "2026-10-25T00:31:00Z", "local": "2026-10-25T02:31:00+02:00", "event": "end", "succeeded": false})"
           "\n");
    CHECK(
        simulate(script()).output
        == R"({"elapsed": 32400, "clock": "2026-06-01T09:00:00Z", "local": "2026-06-01T09:00:00+00:00", "event": "blocked", "due": "2026-06-01T09:00:00Z", "reasons": ["battery"]})"
           "\n"
           R"({"elapsed": 33001, "clock": "2026-06-01T09:10:01Z", "local": "2026-06-01T09:10:01+00:00", "event": "missed", "due": "2026-06-01T09:00:00Z", "reasons": ["battery"]})"
           "\n");
    const auto many = simulate(Story(intervalRecord("Minutes", 1)).lasting(at(1, 0)).script());
    CHECK(many.status == 0);
    CHECK(std::count(many.output.begin(), many.output.end(), '\n') == 120);
}

TEST_CASE("the simulation reads XML, and refuses old-style text that has no dates with a sentence")
{
    const auto outcome = simulateFile(R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict>
<key>Record</key><dict><key>Backups</key><true/><key>BackupsMode</key><string>Interval</string>
<key>Interval</key><dict><key>Hours</key><integer>5</integer></dict></dict>
<key>Zone</key><string>UTC</string>
<key>From</key><date>2026-06-01T00:00:00Z</date><key>Until</key><date>2026-06-01T05:00:00Z</date>
<key>Unknown</key><string>ignored</string>
</dict></plist>)");
    CHECK(outcome.status == 0);
    CHECK(std::count(outcome.output.begin(), outcome.output.end(), '\n') == 2);
    const auto refused =
        simulateFile("{ Record = { Backups = 1; }; Zone = UTC; From = \"2026-06-01\"; Until = \"2026-06-02\"; }");
    CHECK(refused.status == 64);
    CHECK(refused.errors == "The simulation's 'From' is no date.\n");
}

TEST_CASE("the seconds of the beginning and of the end are both looked at")
{
    CHECK(Story(intervalRecord("Minutes", 1)).lastStart("2026-05-31T23:59:00Z").lasting(0).play().size() == 2);
    CHECK(Story(intervalRecord("Minutes", 1)).lasting(60).play().size() == 2);
    CHECK(Story(intervalRecord("Minutes", 1)).lasting(59).play().empty());
    CHECK(Story(dailyRecord(9, 0))
              .first({{"Battery", true}})
              .set(at(9, 1), "Battery", false)
              .lasting(at(9, 1))
              .play()
              .size()
          == 3);
    CHECK(Story(dailyRecord(9, 0))
              .first({{"Battery", true}})
              .set(at(9, 1), "Battery", false)
              .lasting(at(9, 0, 59))
              .play()
              .size()
          == 1);
}

TEST_CASE("at the same second given events come first, then ends, then looks")
{
    CHECK(Story(intervalRecord("Minutes", 2))
              .backupsTake(60)
              .set(180, "Battery", true)
              .set(240, "Battery", false)
              .lasting(240)
              .play()
          == Story::Lines{"06-01 00:02:00 start 06-01 00:02:00", "06-01 00:03:00 end well",
                          "06-01 00:04:00 start 06-01 00:04:00"});
}

TEST_CASE("a file that is no property list is refused with one sentence")
{
    for (const char* content : {"", "bplist00", "<plist><dict>", "\xff\xfe", "( a, b"}) {
        const auto outcome = simulateFile(content);
        CHECK(outcome.status == 64);
        CHECK(outcome.output.empty());
        CHECK(outcome.errors.ends_with(".\n"));
    }
    ChildProcess missing({"/bin/sh", "-c", R"(exec "$0" --simulate /nonexistent 2>&1)", BREVANE_SCHEDULER_HELPER});
    CHECK(missing.readAll() == "The file '/nonexistent' is no property list that can be read.\n");
    CHECK(missing.wait() == 64);
    CHECK(isRefused(Array()));
    CHECK(isRefused("text"));
}

TEST_CASE("a missing or senseless value is refused with one sentence")
{
    CHECK(simulate(script()).status == 0);
    for (const char* key : {"Record", "Zone", "From", "Until"}) {
        CHECK(isRefused(without(key)));
        CHECK(isRefused(changed(key, 5)));
        CHECK(isRefused(changed(key, Array())));
    }
    CHECK(isRefused(changed("Zone", "Europe/Nowhere")));
    CHECK(isRefused(changed("Zone", "")));
    CHECK(isRefused(changed("Until", dateOf("2026-05-31T23:59:59Z"))));
    CHECK(isRefused(changed("From", platform::Date{1e300})));
    CHECK(isRefused(changed("LastStart", "2026-06-01")));
    CHECK(isRefused(changed("Conditions", Array())));
    CHECK(isRefused(changed("Conditions", Dictionary{{"Battery", "yes"}})));
    CHECK(isRefused(changed("Duration", -1)));
    CHECK(isRefused(changed("Duration", "60")));
    CHECK(isRefused(changed("Duration", 1.5)));
    CHECK(isRefused(changed("Results", true)));
    CHECK(isRefused(changed("Results", Array{"well"})));
    CHECK(isRefused(changed("Events", Dictionary())));
    CHECK(isRefused(changed("Events", Array{5})));
}

TEST_CASE("a senseless event is refused with one sentence")
{
    CHECK(simulate(withEvent({{"At", 1}, {"Asleep", true}, {"Unknown", 1}})).status == 0);
    CHECK(isRefused(withEvent({{"Asleep", true}})));
    CHECK(isRefused(withEvent({{"At", "1"}, {"Asleep", true}})));
    CHECK(isRefused(withEvent({{"At", -1}, {"Asleep", true}})));
    CHECK(isRefused(withEvent({{"At", 1}})));
    CHECK(isRefused(withEvent({{"At", 1}, {"Asleep", true}, {"ClockBy", 5}})));
    CHECK(isRefused(withEvent({{"At", 1}, {"Asleep", 1}})));
    CHECK(isRefused(withEvent({{"At", 1}, {"ClockBy", 1.5}})));
    CHECK(isRefused(withEvent({{"At", 1}, {"ClockBy", 1'000'000'000'000}})));
    CHECK(isRefused(withEvent({{"At", 1}, {"Zone", "Nowhere"}})));
    CHECK(isRefused(withEvent({{"At", 1}, {"Apply", Array()}})));
    CHECK(isRefused(withEvent({{"At", 1}, {"Set", true}})));
    CHECK(isRefused(withEvent({{"At", 1}, {"Set", Dictionary{{"Wired", "no"}}}})));
    const Dictionary late{{"At", 2}, {"ClockBy", 1}};
    const Dictionary early{{"At", 1}, {"ClockBy", 1}};
    CHECK(isRefused(changed("Events", Array{late, early})));
    CHECK(simulate(changed("Events", Array{early, late, late})).status == 0);
}

TEST_CASE("the clock may go to the first and the last second of all years, and not beyond")
{
    const auto last = [] { return Story(dailyRecord(9, 0)).in("UTC", "9999-12-31T23:00:00Z").lasting(at(0, 59, 59)); };
    CHECK(simulate(last().script()).status == 0);
    CHECK(isRefused(last().setClockBy(60, 1).script()));
    CHECK(simulate(last().setClockBy(60, -1).script()).status == 0);
    CHECK(simulate(last().setClockBy(60, -1).setClockBy(61, 1).script()).status == 0);
    CHECK(isRefused(last().setClockBy(60, -1).setClockBy(61, 2).script()));

    const auto first = [] { return Story(dailyRecord(9, 0)).in("UTC", "0001-01-01T00:00:10Z").lasting(60); };
    CHECK(simulate(first().setClockBy(5, -15).script()).status == 0);
    CHECK(isRefused(first().setClockBy(5, -16).script()));
}

TEST_CASE("without a file the program tells its usage")
{
    ChildProcess program({"/bin/sh", "-c", R"(exec "$0" --simulate 2>&1)", BREVANE_SCHEDULER_HELPER});
    CHECK(program.readAll().find("--simulate FILE") != std::string::npos);
    CHECK(program.wait() == 64);
}
