#include "platform/Format.h"
#include "protocol/ErrorCodes.h"
#include "tests/platform/ScriptedPreferences.h"
#include "tests/schedule/EditingModel.h"
#include "tests/shell/support/RowsUser.h"
#include "tests/support/Instrumented.h"

#include <doctest/doctest.h>
#include <random>
#include <sstream>

using platform::Dictionary;
using platform::PropertyList;

namespace {

class Random {
public:
    explicit Random(std::uint64_t seed) : _engine(seed) { }
    int below(int limit) { return static_cast<int>(_engine() % static_cast<std::uint64_t>(limit)); }
    bool chance(int percent) { return below(100) < percent; }

private:
    std::mt19937_64 _engine;
};

enum class Kind {
    ToggleBackups,
    ChooseMode,
    TypeCount,
    StepCount,
    ChooseUnit,
    ToggleSuspend,
    PickTimes,
    ToggleAdvancedSettings,
    ToggleAdvanced,
    ToggleBattery,
    ToggleSnapshots,
    ChooseWeekday,
    PickRowTime,
    AddRow,
    RemoveRow,
    ToggleASAP,
    ShowCurrent,
    Fetch,
    Apply,
};
constexpr int kindCount = 19;
const char* const kindNames[]{"backups",   "mode",         "type count",    "step count", "unit",
                              "suspend",   "times",        "show advanced", "advanced",   "battery",
                              "snapshots", "weekday",      "row time",      "add row",    "remove row",
                              "ASAP",      "show current", "fetch",         "apply"};

struct Action {
    Kind kind = Kind::Apply;
    int first = 0;
    int second = 0;
};

struct Sequence {
    Machine machine;
    std::vector<ScheduleSettings> records; // the first is there at launch
    std::vector<Action> actions;
};

PropertyList randomInterval(Random& random)
{
    if (random.chance(5))
        return "often";
    Dictionary interval;
    for (const char* key : {"Minutes", "Hours", "Days", "Weeks"}) {
        if (random.chance(35))
            interval.set(key, random.chance(10) ? PropertyList("x") : PropertyList(random.below(1100) - 20));
    }
    return interval;
}

PropertyList randomEntry(Random& random)
{
    if (random.chance(5))
        return "noon";
    Dictionary entry;
    for (const char* key : {"Weekday", "Hour", "Minute"}) {
        const int limit = *key == 'W' ? 8 : *key == 'H' ? 24 : 60;
        if (random.chance(75))
            entry.set(key, random.chance(5) ? PropertyList("x") : PropertyList(random.below(limit)));
        if (random.chance(5))
            entry.set(key, random.below(400) - 200);
    }
    if (random.chance(8))
        entry.set("Day", random.chance(80) ? PropertyList(random.below(31)) : PropertyList("first"));
    return entry;
}

PropertyList randomCalendar(Random& random)
{
    if (random.chance(5))
        return platform::Array{1};
    Dictionary calendar{{"Extra", platform::Array{1, 2}}};
    if (random.chance(80))
        calendar.set("ASAP", random.chance(90) ? PropertyList(random.chance(50)) : PropertyList("soon"));
    if (random.chance(90)) {
        platform::Array entries;
        for (int i = random.below(random.chance(10) ? 40 : 6); i > 0; --i)
            entries.push_back(randomEntry(random));
        calendar.set("Intervals", std::move(entries));
    }
    return calendar;
}

ScheduleSettings randomRecord(Random& random)
{
    ScheduleSettings record;
    if (random.chance(15))
        record.set("Disabled", random.chance(50));
    for (const char* key : {"Snapshots", "Backups", "Suspend", "AllowBattery"}) {
        if (random.chance(85))
            record.set(key, random.chance(90) ? PropertyList(random.chance(60)) : PropertyList(random.below(2)));
    }
    if (random.chance(90)) {
        const char* const values[]{"WhenInactive",      "Interval",          "Interval",
                                   "CalendarIntervals", "CalendarIntervals", "Sometimes"};
        record.set("BackupsMode", values[random.below(6)]);
    }
    if (random.chance(70))
        record.set("Interval", randomInterval(random));
    if (random.chance(50))
        record.set("WhenInactive", Dictionary());
    if (random.chance(75))
        record.set("CalendarIntervals", randomCalendar(random));
    if (random.chance(70)) {
        record.set("SuspendSettings",
                   Dictionary{{"StartHour", random.below(24)},
                              {"StartMinute", random.below(60)},
                              {"EndHour", random.below(24)},
                              {"EndMinute", random.below(60)}});
    }
    for (const char* key : {"DontRunWhenPassive", "DontRunWithSleepPreventers", "DontRunWhenNotNetworkWired"}) {
        if (random.chance(40))
            record.set(key, random.chance(20));
    }
    if (random.chance(30))
        record.set("Unknown", random.below(5));
    return record;
}

Sequence randomSequence(std::uint64_t seed)
{
    Random random(seed);
    const platform::OperatingSystemVersion versions[]{{10, 9, 5}, {10, 12, 0}, {10, 13, 6}, {10, 14, 0}, {14, 0, 0}};
    Sequence sequence;
    sequence.machine.system = versions[random.below(5)];
    if (random.chance(30))
        sequence.machine.battery = random.chance(50) ? std::optional(false) : std::nullopt;
    for (int i = 0; i < 3; ++i)
        sequence.records.push_back(randomRecord(random));
    const int length = 4 + random.below(12);
    for (int i = 0; i < length; ++i) {
        const Kind kind = random.chance(20) ? Kind::Apply : static_cast<Kind>(random.below(kindCount));
        sequence.actions.push_back({kind, random.below(24 * 60), random.below(24 * 60)});
    }
    sequence.actions.push_back({Kind::Apply, 0, 0});
    return sequence;
}

// Does the same in the window and in the model, and says where they part.
class Comparison {
public:
    explicit Comparison(const Sequence& sequence)
        : _sequence(sequence),
          _editor(sequence.records[0], sequence.machine),
          _model(sequence.machine, sequence.records[0])
    {
        scripted::preferences::set("RequiresACPower", "com.apple.TimeMachine", false);
    }

    // Empty when there is no difference.
    std::string difference()
    {
        std::string found = differenceInRows("at launch");
        for (std::size_t i = 0; found.empty() && i < _sequence.actions.size(); ++i) {
            const Action& action = _sequence.actions[i];
            found = action.kind == Kind::Apply ? differenceInApplying(action) : std::string();
            if (action.kind != Kind::Apply)
                perform(action);
            if (found.empty())
                found = differenceInRows(kindNames[static_cast<int>(action.kind)]);
        }
        return found;
    }

private:
    void perform(const Action& action);
    void performInMode(const Action& action);
    void performInInterval(const Action& action);
    void performInCalendar(const Action& action);
    std::string differenceInApplying(const Action& action);
    std::string differenceInRows(const std::string& after) const;

    void toggle(const char* box, bool& modelled)
    {
        if (_editor.user.sees(box)) {
            _editor.user.click(box);
            modelled = !modelled;
        }
    }

    const Sequence& _sequence;
    EditorTest _editor;
    EditingModel _model;
    std::size_t _fetched = 0;
};

std::string Comparison::differenceInRows(const std::string& after) const
{
    const auto seen = _editor.user.rows();
    const auto modelled = _model.rows();
    if (seen == modelled && _editor.user.sees("ruleEditor")
        && RowsUser().count() != static_cast<int>(_model.calendarRows()))
        return "number of calendar rows after " + after;
    if (seen == modelled)
        return {};
    std::ostringstream text;
    text << "rows after " << after << ":";
    for (const std::string& row : seen)
        text << ' ' << row;
    text << "\nexpected:";
    for (const std::string& row : modelled)
        text << ' ' << row;
    return text.str();
}

std::string Comparison::differenceInApplying(const Action& action)
{
    const ScheduleSettings expected = _model.record();
    const bool isRefused = action.first % 5 == 0;
    const bool isCanceled = action.first % 5 == 1;
    if (isRefused)
        _editor.scheduler.refuseWith(platform::Error{BRVErrorDomain, BRVErrorUpdateRunning, {}, nullptr});
    else if (isCanceled)
        _editor.scheduler.refuseWith(
            platform::Error{ZRKAuthorizationErrorDomain, ZRKAuthorizationErrorUserCanceled, {}, nullptr});
    else
        _editor.scheduler.refuseWith(std::nullopt);

    const auto sent = _editor.apply();
    const auto alert = user::currentAlert();
    if (alert)
        _editor.user.dismissAlert();
    const std::string title = alert ? alert->messageText : "";

    if (expected == _model.current())
        return !sent && title == "Settings already applied." ? "" : "An unchanged record was sent. " + title;
    if (!sent || *sent != expected) {
        return "sent " + (sent ? platform::description(*sent) : "nothing") + "\nexpected "
            + platform::description(expected);
    }
    if (!isRefused && !isCanceled)
        _model.accept(expected);
    const std::string expectedTitle = isRefused ? "Failed to apply settings."
        : isCanceled                            ? ""
                                                : "Settings applied successfully.";
    return title == expectedTitle ? "" : "told \"" + title + '"';
}

void Comparison::perform(const Action& action)
{
    MainWindowUser& user = _editor.user;
    const char* const advancedBoxes[]{"dontRunWhenPassiveCheckBox", "dontRunWithSleepPreventersCheckBox",
                                      "dontRunWhenNotNetworkWiredCheckBox"};
    const int box = action.first % 3;
    switch (action.kind) {
    case Kind::ToggleBackups:
        user.click("backupsCheckBox");
        return _model.toggleBackups();
    case Kind::ChooseMode:
        if (!_model.backups)
            return;
        user.choose("operationModePopUp", action.first % 3);
        return _model.chooseMode(action.first % 3);
    case Kind::ToggleSuspend:
        return toggle("suspendCheckBox", _model.suspend);
    case Kind::PickTimes: {
        if (!_model.backups)
            return;
        const platform::TimeOfDay from{action.first / 60, action.first % 60};
        const platform::TimeOfDay to{action.second / 60, action.second % 60};
        user.setTime("suspendFromPicker", from);
        user.setTime("suspendToPicker", to);
        return _model.setTimes(from, to);
    }
    case Kind::ToggleAdvancedSettings:
        if (!_model.backups)
            return;
        user.click("advancedSettingsButton");
        return _model.toggleAdvancedSettings();
    case Kind::ToggleAdvanced:
        return toggle(advancedBoxes[box], _model.advanced[static_cast<std::size_t>(box)]);
    case Kind::ToggleBattery:
        return toggle("allowBatteryCheckBox", _model.battery);
    case Kind::ToggleSnapshots:
        return toggle("snapshotsCheckBox", _model.snapshots);
    case Kind::ShowCurrent:
        user.clickMenuItem("showCurrentSettingsMenuItem");
        return _model.show();
    case Kind::Fetch:
        _fetched = (_fetched + 1) % _sequence.records.size();
        _editor.scheduler.setRecord(_sequence.records[_fetched]);
        _editor.controller->reloadSettings();
        _editor.controller->updateSettings();
        return _model.fetch(_sequence.records[_fetched]);
    default:
        return performInMode(action);
    }
}

void Comparison::performInMode(const Action& action)
{
    if (_editor.user.sees("intervalField"))
        performInInterval(action);
    else if (_editor.user.sees("ruleEditor"))
        performInCalendar(action);
}

void Comparison::performInCalendar(const Action& action)
{
    const auto row = action.first % static_cast<int>(_model.calendarRows());
    const auto modelled = static_cast<std::size_t>(row);
    const int weekdays[]{0, 2, 3, 4, 5, 6, 7, 8};
    const platform::TimeOfDay time{action.second / 60, action.second % 60};
    RowsUser rows;
    if (action.kind == Kind::ChooseWeekday) {
        const int index = weekdays[action.second % 8];
        rows.chooseWeekday(row, index);
        _model.chooseWeekday(modelled, index);
    } else if (action.kind == Kind::PickRowTime) {
        rows.setTime(row, time);
        _model.setRowTime(modelled, time);
    } else if (action.kind == Kind::AddRow) {
        rows.add(row);
        _model.addRow(modelled);
    } else if (action.kind == Kind::RemoveRow && rows.canRemove(row)) {
        rows.remove(row);
        _model.removeRow(modelled);
    } else if (action.kind == Kind::ToggleASAP) {
        toggle("asapCheckBox", _model.asap);
    }
}

void Comparison::performInInterval(const Action& action)
{
    MainWindowUser& user = _editor.user;
    if (action.kind == Kind::TypeCount) {
        const int count = action.first % 1000;
        user.replaceText("intervalField", std::to_string(count));
        _model.setCount(count);
    } else if (action.kind == Kind::StepCount) {
        const bool up = action.first % 2 == 0;
        user.press("intervalField", up ? Key::Up : Key::Down);
        _model.setCount(_model.count() + (up ? 1 : -1));
    } else if (action.kind == Kind::ChooseUnit) {
        user.choose("intervalUnitsPopUp", action.first % 4);
        _model.chooseUnit(action.first % 4);
    }
}

std::string differenceIn(const Sequence& sequence)
{
    try {
        return Comparison(sequence).difference();
    } catch (const std::logic_error& complaint) {
        return complaint.what();
    }
}

// The same failure with as few actions, and keys in the records, as dropping one at a time leads to.
Sequence shrunk(Sequence sequence)
{
    const auto takeIfDifferent = [&sequence](Sequence smaller) {
        if (!differenceIn(smaller).empty())
            sequence = std::move(smaller);
    };
    for (std::size_t i = sequence.actions.size(); i-- > 0;) {
        Sequence smaller = sequence;
        smaller.actions.erase(smaller.actions.begin() + static_cast<std::ptrdiff_t>(i));
        takeIfDifferent(std::move(smaller));
    }
    for (std::size_t i = 0; i < sequence.records.size(); ++i) {
        const ScheduleSettings record = sequence.records[i];
        for (const auto& entry : record) {
            Sequence smaller = sequence;
            smaller.records[i].remove(entry.key);
            takeIfDifferent(std::move(smaller));
        }
    }
    return sequence;
}

constexpr std::uint64_t sequences = isInstrumented ? 100 : 400;

std::string report(std::uint64_t seed, const Sequence& sequence)
{
    std::ostringstream text;
    text << "seed " << seed << ", macOS " << sequence.machine.system.major << '.' << sequence.machine.system.minor
         << '\n';
    for (const ScheduleSettings& record : sequence.records)
        text << "fetched " << platform::description(record) << '\n';
    for (const Action& action : sequence.actions)
        text << kindNames[static_cast<int>(action.kind)] << ' ' << action.first << ' ' << action.second << '\n';
    text << differenceIn(sequence);
    return text.str();
}

} // namespace

TEST_CASE("whatever a person does, in any order, what is shown and sent follows the rules")
{
    const std::string note =
        isInstrumented ? " sequences, fewer since every access to memory is checked" : " sequences";
    const std::string told = std::to_string(sequences) + note;
    MESSAGE(told);
    for (std::uint64_t seed = 1; seed <= sequences; ++seed) {
        const Sequence sequence = randomSequence(seed);
        if (!differenceIn(sequence).empty()) {
            FAIL(report(seed, shrunk(sequence)));
        }
    }
}
