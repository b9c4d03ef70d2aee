#include "schedule/model/EditorState.h"

#include <cstdint>
#include <doctest/doctest.h>
#include <limits>
#include <string>
#include <vector>

using platform::Array;
using platform::Dictionary;
using platform::PropertyList;
using platform::TimeOfDay;
using Rows = std::vector<EditorRow>;
using enum EditorRow;

namespace {

constexpr EditorCapabilities everything{true, true, true, true, true};
constexpr TimeOfDay nine{9, 0};
constexpr TimeOfDay seventeen{17, 0};

// As the interface file has the window.
EditorState untouched()
{
    EditorState state;
    state.suspendFrom = nine;
    state.suspendTo = seventeen;
    return state;
}

EditorState shown(const ScheduleSettings& record, const EditorState& before = untouched())
{
    return EditorState::showing(Schedule::fromRecord(record), before);
}

ScheduleSettings suspended(std::int64_t startHour, std::int64_t startMinute, std::int64_t endHour,
                           std::int64_t endMinute)
{
    return {
        {"SuspendSettings",
         Dictionary{
             {"StartHour", startHour}, {"StartMinute", startMinute}, {"EndHour", endHour}, {"EndMinute", endMinute}}}};
}

EditorState withEverythingOn()
{
    EditorState state = untouched();
    state.backups = state.suspend = state.allowBattery = state.snapshots = true;
    state.dontRunWhenPassive = state.dontRunWithSleepPreventers = state.dontRunWhenNotNetworkWired = true;
    state.showsAdvancedSettings = true;
    return state;
}

ScheduleSettings recordOf(const EditorState& state, const EditorCapabilities& capabilities = everything,
                          const ScheduleSettings& current = {}, const ModeSettings& modes = {})
{
    return state.record(current, capabilities, modes);
}

std::vector<std::string> keys(const Dictionary& dictionary)
{
    std::vector<std::string> result;
    for (const auto& entry : dictionary)
        result.push_back(entry.key);
    return result;
}

const std::vector<std::string> advancedKeys{"DontRunWhenPassive", "DontRunWithSleepPreventers",
                                            "DontRunWhenNotNetworkWired"};

} // namespace

TEST_CASE("an empty record shows everything off, the when-inactive mode, and the times as they were")
{
    CHECK(shown({}) == untouched());
}

TEST_CASE("every key of a record has its control")
{
    const auto onlyWith = [](bool EditorState::* control) {
        EditorState expected = untouched();
        expected.*control = true;
        return expected;
    };
    CHECK(shown({{"Backups", true}}) == onlyWith(&EditorState::backups));
    CHECK(shown({{"Suspend", true}}) == onlyWith(&EditorState::suspend));
    CHECK(shown({{"AllowBattery", true}}) == onlyWith(&EditorState::allowBattery));
    CHECK(shown({{"Snapshots", true}}) == onlyWith(&EditorState::snapshots));
    EditorState passive = onlyWith(&EditorState::dontRunWhenPassive);
    EditorState sleep = onlyWith(&EditorState::dontRunWithSleepPreventers);
    EditorState wired = onlyWith(&EditorState::dontRunWhenNotNetworkWired);
    passive.showsAdvancedSettings = sleep.showsAdvancedSettings = wired.showsAdvancedSettings = true;
    CHECK(shown({{"DontRunWhenPassive", true}}) == passive);
    CHECK(shown({{"DontRunWithSleepPreventers", true}}) == sleep);
    CHECK(shown({{"DontRunWhenNotNetworkWired", true}}) == wired);
    CHECK(shown({{"BackupsMode", "Interval"}}).modeIndex == 1);
    CHECK(shown({{"BackupsMode", "CalendarIntervals"}}).modeIndex == 2);
    CHECK(shown({{"BackupsMode", "WhenInactive"}}).modeIndex == 0);
    const EditorState times = shown(suspended(22, 15, 6, 45));
    CHECK(times.suspendFrom == TimeOfDay{22, 15});
    CHECK(times.suspendTo == TimeOfDay{6, 45});
}

TEST_CASE("a record without a mode, or with one that there is not, shows when inactive, whatever was selected")
{
    EditorState before = untouched();
    before.modeIndex = 2;
    CHECK(shown({}, before).modeIndex == 0);
    CHECK(shown({{"BackupsMode", "Hourly"}}, before).modeIndex == 0);
    CHECK(shown({{"BackupsMode", 1}}, before).modeIndex == 0);
}

TEST_CASE("what a record lacks is shown as off, whatever was on")
{
    EditorState off = untouched();
    off.showsAdvancedSettings = true; // these stay open
    CHECK(shown({}, withEverythingOn()) == off);
}

TEST_CASE("a disabled record shows backups and snapshots off and everything else as it says")
{
    const ScheduleSettings record{{"Disabled", true}, {"Backups", true},      {"Snapshots", true},
                                  {"Suspend", true},  {"AllowBattery", true}, {"BackupsMode", "Interval"}};
    const EditorState state = shown(record);
    CHECK_FALSE(state.backups);
    CHECK_FALSE(state.snapshots);
    CHECK(state.suspend);
    CHECK(state.allowBattery);
    CHECK(state.modeIndex == 1);
    CHECK(shown({{"Disabled", false}, {"Backups", true}, {"Snapshots", true}}).backups);
    CHECK(shown({{"Disabled", false}, {"Backups", true}, {"Snapshots", true}}).snapshots);
    CHECK_FALSE(shown({{"Disabled", true}, {"Backups", false}}).backups);
}

TEST_CASE("numbers count by value, and other types as off or absent")
{
    const EditorState numbers = shown({{"Backups", 1}, {"Suspend", 2}, {"Snapshots", 0}, {"AllowBattery", 1.5}});
    CHECK(numbers.backups);
    CHECK(numbers.suspend);
    CHECK_FALSE(numbers.snapshots);
    CHECK(numbers.allowBattery);
    CHECK(shown({{"Backups", "true"},
                 {"Suspend", "yes"},
                 {"SuspendSettings", 5},
                 {"DontRunWhenPassive", "true"},
                 {"AllowBattery", Dictionary()},
                 {"Snapshots", Array{true}}})
          == untouched());
}

TEST_CASE("without suspension times the pickers keep what they show")
{
    EditorState before = untouched();
    before.suspendFrom = {1, 2};
    before.suspendTo = {3, 4};
    CHECK(shown({{"Suspend", true}}, before).suspendFrom == TimeOfDay{1, 2});
    CHECK(shown({{"Suspend", true}}, before).suspendTo == TimeOfDay{3, 4});
}

TEST_CASE("hours and minutes out of range carry over, as a lenient calendar has it")
{
    struct Case {
        std::int64_t hour, minute;
        TimeOfDay shown;
    };
    for (const Case& each : std::vector<Case>{{25, 0, {1, 0}},
                                              {24, 0, {0, 0}},
                                              {0, 60, {1, 0}},
                                              {23, 59, {23, 59}},
                                              {23, 61, {0, 1}},
                                              {-1, 0, {23, 0}},
                                              {0, -1, {23, 59}},
                                              {100, 100, {5, 40}},
                                              {12, -720, {0, 0}}}) {
        CAPTURE(each.hour);
        CAPTURE(each.minute);
        const EditorState from = shown(suspended(each.hour, each.minute, 6, 45));
        CHECK(from.suspendFrom == each.shown);
        CHECK(from.suspendTo == TimeOfDay{6, 45});
        const EditorState to = shown(suspended(6, 45, each.hour, each.minute));
        CHECK(to.suspendFrom == TimeOfDay{6, 45});
        CHECK(to.suspendTo == each.shown);
    }
}

TEST_CASE("a time that cannot be counted leaves its picker alone, and the other is set")
{
    constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();
    for (const auto& [hour, minute] : {std::pair<std::int64_t, std::int64_t>{huge, 5}, {huge / 60, huge}}) {
        CHECK(shown(suspended(hour, minute, 7, 30)).suspendFrom == nine);
        CHECK(shown(suspended(hour, minute, 7, 30)).suspendTo == TimeOfDay{7, 30});
        CHECK(shown(suspended(7, 30, hour, minute)).suspendFrom == TimeOfDay{7, 30});
        CHECK(shown(suspended(7, 30, hour, minute)).suspendTo == seventeen);
    }
}

TEST_CASE("missing or mistyped parts of a time count as 0")
{
    const EditorState state =
        shown({{"SuspendSettings", Dictionary{{"StartMinute", 20}, {"EndHour", "six"}, {"EndMinute", true}}}});
    CHECK(state.suspendFrom == TimeOfDay{0, 20});
    CHECK(state.suspendTo == TimeOfDay{0, 1});
}

TEST_CASE("any advanced condition opens the advanced settings, and nothing in a record closes them")
{
    for (const std::string& key : advancedKeys) {
        CHECK(shown({{key, true}}).showsAdvancedSettings);
        CHECK_FALSE(shown({{key, false}}).showsAdvancedSettings);
    }
    EditorState open = untouched();
    open.showsAdvancedSettings = true;
    CHECK(shown({}, open).showsAdvancedSettings);
}

TEST_CASE("the advanced settings' button says what it would do, and the mode can be chosen, while backups are on")
{
    EditorState state;
    CHECK(std::string(state.advancedSettingsTitle()) == "Show Advanced Settings");
    CHECK_FALSE(state.enablesModes());
    CHECK(state.hidesAdvancedSettingsButton());
    state.showsAdvancedSettings = true;
    CHECK(std::string(state.advancedSettingsTitle()) == "Hide Advanced Settings");
    CHECK(state.hidesAdvancedSettingsButton());
    state.backups = true;
    CHECK(state.enablesModes());
    CHECK_FALSE(state.hidesAdvancedSettingsButton());
}

TEST_CASE("with backups off only the first row stands, and the snapshots where there are any")
{
    EditorState state = withEverythingOn();
    state.backups = false;
    CHECK(state.rows(everything) == Rows{Mode, Snapshots});
    CHECK(state.rows({}) == Rows{Mode});
}

TEST_CASE("with backups on the rows stand in their order, each where the machine has what it is about")
{
    EditorState state = untouched();
    state.backups = true;
    CHECK(state.rows({}) == Rows{Mode, ModeEditor, Suspend});
    CHECK(state.rows({.battery = true}) == Rows{Mode, ModeEditor, Suspend, AllowBattery});
    CHECK(state.rows({.snapshots = true}) == Rows{Mode, ModeEditor, Suspend, Snapshots});
    CHECK(state.rows(everything) == Rows{Mode, ModeEditor, Suspend, AllowBattery, Snapshots});
    state.showsAdvancedSettings = true;
    CHECK(state.rows({}) == Rows{Mode, ModeEditor, Suspend, DontRunWithSleepPreventers});
    CHECK(state.rows({.passiveCondition = true})
          == Rows{Mode, ModeEditor, Suspend, DontRunWhenPassive, DontRunWithSleepPreventers});
    CHECK(state.rows({.wiredNetworkCondition = true})
          == Rows{Mode, ModeEditor, Suspend, DontRunWithSleepPreventers, DontRunWhenNotNetworkWired});
    CHECK(state.rows(everything)
          == Rows{Mode, ModeEditor, Suspend, AllowBattery, DontRunWhenPassive, DontRunWithSleepPreventers,
                  DontRunWhenNotNetworkWired, Snapshots});
}

TEST_CASE("a system offers each thing from its release on")
{
    const auto on = [](unsigned newest) {
        return EditorCapabilities::of(false, [newest](unsigned release) { return release <= newest; });
    };
    CHECK(EditorCapabilities::of(false, [](unsigned) { return false; }) == EditorCapabilities());
    CHECK(EditorCapabilities::of(true, [](unsigned) { return false; }) == EditorCapabilities{.battery = true});
    CHECK(on(0) == EditorCapabilities{.passiveCondition = true});
    CHECK(on(2) == on(0));
    CHECK(on(3) == EditorCapabilities{.snapshots = true, .passiveCondition = true});
    CHECK(on(4) == EditorCapabilities{.snapshots = true, .passiveCondition = true, .wiredNetworkCondition = true});
    CHECK(on(5)
          == EditorCapabilities{
              .snapshots = true, .passiveCondition = true, .wiredNetworkCondition = true, .batterySetting = true});
}

TEST_CASE("a record made of nothing has every key in the editor's order")
{
    const ModeSettings modes{Dictionary(), Dictionary{{"Minutes", 5}}, Dictionary{{"ASAP", true}}};
    const ScheduleSettings record = recordOf(withEverythingOn(), everything, {}, modes);
    CHECK(keys(record)
          == std::vector<std::string>{"Backups", "BackupsMode", "WhenInactive", "Interval", "CalendarIntervals",
                                      "Suspend", "SuspendSettings", "DontRunWhenPassive", "DontRunWithSleepPreventers",
                                      "DontRunWhenNotNetworkWired", "AllowBattery", "Snapshots"});
    CHECK(keys(*record.dictionaryForKey("SuspendSettings"))
          == std::vector<std::string>{"StartHour", "StartMinute", "EndHour", "EndMinute"});
}

TEST_CASE("the values of a record have their own types")
{
    const ScheduleSettings record = recordOf(withEverythingOn());
    using Type = PropertyList::Type;
    for (const char* key : {"Backups", "Suspend", "DontRunWhenPassive", "DontRunWithSleepPreventers",
                            "DontRunWhenNotNetworkWired", "AllowBattery", "Snapshots"})
        CHECK(record.find(key)->type() == Type::Boolean);
    CHECK(record.find("BackupsMode")->type() == Type::String);
    for (const auto& time : *record.dictionaryForKey("SuspendSettings"))
        CHECK(time.value.type() == Type::Integer);
}

TEST_CASE("every control is written under its key alone")
{
    const ScheduleSettings off = recordOf(untouched());
    struct Case {
        bool EditorState::* control;
        const char* key;
    };
    for (const Case& each :
         {Case{&EditorState::backups, "Backups"}, Case{&EditorState::suspend, "Suspend"},
          Case{&EditorState::allowBattery, "AllowBattery"}, Case{&EditorState::snapshots, "Snapshots"}}) {
        EditorState state = untouched();
        state.*each.control = true;
        ScheduleSettings expected = off;
        expected.set(each.key, true);
        CHECK(recordOf(state) == expected);
    }
    for (const char* key : {"Backups", "Suspend", "AllowBattery", "Snapshots"})
        CHECK_FALSE(off.boolForKey(key));
    CHECK(off == recordOf(shown(off)));

    EditorState times = untouched();
    times.suspendFrom = {23, 10};
    times.suspendTo = {1, 50};
    CHECK(*recordOf(times).dictionaryForKey("SuspendSettings")
          == Dictionary{{"StartHour", 23}, {"StartMinute", 10}, {"EndHour", 1}, {"EndMinute", 50}});
}

TEST_CASE("the mode is written by its name, and no selection as the calendar")
{
    const char* const names[]{"WhenInactive", "Interval", "CalendarIntervals"};
    EditorState state = untouched();
    for (int index = 0; index < 3; ++index) {
        state.modeIndex = index;
        CHECK(*recordOf(state).stringForKey("BackupsMode") == names[index]);
    }
    state.modeIndex = -1;
    CHECK(*recordOf(state).stringForKey("BackupsMode") == "CalendarIntervals");
}

TEST_CASE("a record begins as a copy of the current one, without Disabled")
{
    const Dictionary unknown{{"Nested", Array{1, "two", Dictionary{{"Three", 3.5}}}}};
    const ScheduleSettings current{{"Future", unknown}, {"Disabled", true}, {"Backups", true}};
    const ScheduleSettings record = recordOf(untouched(), everything, current);
    CHECK_FALSE(record.contains("Disabled"));
    CHECK(*record.dictionaryForKey("Future") == unknown);
    CHECK_FALSE(record.boolForKey("Backups"));
    CHECK_FALSE(recordOf(untouched(), everything, {{"Disabled", false}}).contains("Disabled"));
}

TEST_CASE("a key that the current record has keeps its place")
{
    const auto order = keys(recordOf(untouched(), everything, {{"Snapshots", true}, {"Note", 1}, {"Backups", true}}));
    CHECK(order[0] == "Snapshots");
    CHECK(order[1] == "Note");
    CHECK(order[2] == "Backups");
    CHECK(order[3] == "BackupsMode");
}

TEST_CASE("each opened editor writes its mode, and the others' sub-records stay as they are")
{
    const Dictionary odd{{"Minutes", 180}, {"Extra", "kept"}};
    const ScheduleSettings current{{"WhenInactive", odd}, {"Interval", odd}, {"CalendarIntervals", odd}};
    const Dictionary written{{"written", true}};
    const char* const names[]{"WhenInactive", "Interval", "CalendarIntervals"};
    for (std::size_t opened = 0; opened < 3; ++opened) {
        ModeSettings modes;
        modes[opened] = written;
        const ScheduleSettings record = recordOf(untouched(), everything, current, modes);
        for (std::size_t mode = 0; mode < 3; ++mode)
            CHECK(*record.dictionaryForKey(names[mode]) == (mode == opened ? written : odd));
    }
    CHECK_FALSE(recordOf(untouched()).contains("Interval"));
}

TEST_CASE("an advanced condition is written as on only when it is shown, judged by the system and ticked")
{
    for (int choice = 0; choice < 16; ++choice) {
        EditorState state = withEverythingOn();
        state.showsAdvancedSettings = (choice & 1) != 0;
        const EditorCapabilities machine{.passiveCondition = (choice & 2) != 0,
                                         .wiredNetworkCondition = (choice & 4) != 0};
        const bool ticked = (choice & 8) != 0;
        state.dontRunWhenPassive = state.dontRunWithSleepPreventers = state.dontRunWhenNotNetworkWired = ticked;
        const ScheduleSettings record = recordOf(state, machine);
        const bool written = ticked && state.showsAdvancedSettings;
        CAPTURE(choice);
        for (const std::string& key : advancedKeys)
            REQUIRE(record.contains(key));
        CHECK(record.boolForKey("DontRunWhenPassive") == (written && machine.passiveCondition));
        CHECK(record.boolForKey("DontRunWithSleepPreventers") == written);
        CHECK(record.boolForKey("DontRunWhenNotNetworkWired") == (written && machine.wiredNetworkCondition));
    }
    for (std::size_t ticked = 0; ticked < 3; ++ticked) {
        EditorState state = untouched();
        state.showsAdvancedSettings = true;
        bool EditorState::* const boxes[]{&EditorState::dontRunWhenPassive, &EditorState::dontRunWithSleepPreventers,
                                          &EditorState::dontRunWhenNotNetworkWired};
        state.*boxes[ticked] = true;
        for (std::size_t key = 0; key < 3; ++key)
            CHECK(recordOf(state).boolForKey(advancedKeys[key]) == (key == ticked));
    }
}

TEST_CASE("what the machine does not have is sent back as it came, or not at all")
{
    const ScheduleSettings odd{{"AllowBattery", "sometimes"}, {"Snapshots", 7}};
    const ScheduleSettings kept = recordOf(withEverythingOn(), {}, odd);
    CHECK(*kept.find("AllowBattery") == PropertyList("sometimes"));
    CHECK(kept.find("Snapshots")->type() == PropertyList::Type::Integer);
    CHECK_FALSE(recordOf(withEverythingOn(), {}).contains("AllowBattery"));
    CHECK_FALSE(recordOf(withEverythingOn(), {}).contains("Snapshots"));
    CHECK(recordOf(untouched(), {.battery = true}, odd).find("AllowBattery")->type() == PropertyList::Type::Boolean);
    CHECK(*recordOf(untouched(), {.battery = true}, odd).find("Snapshots") == PropertyList(7));
    CHECK(*recordOf(untouched(), {.snapshots = true}, odd).find("Snapshots") == PropertyList(false));
    CHECK(*recordOf(untouched(), {.snapshots = true}, odd).find("AllowBattery") == PropertyList("sometimes"));
}
