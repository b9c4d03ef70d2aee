#include "tests/schedule/EditingModel.h"

#include "tests/platform/ScriptedCalendar.h"

#include <algorithm>
#include <utility>

using platform::Dictionary;
using platform::TimeOfDay;

namespace {

const std::array<const char*, 3> advancedKeys{"DontRunWhenPassive", "DontRunWithSleepPreventers",
                                              "DontRunWhenNotNetworkWired"};
const std::array<const char*, 3> advancedBoxes{"dontRunWhenPassiveCheckBox", "dontRunWithSleepPreventersCheckBox",
                                               "dontRunWhenNotNetworkWiredCheckBox"};
const std::array<const char*, 3> modes{"WhenInactive", "Interval", "CalendarIntervals"};
const std::array<const char*, 3> editorViews{"whenInactiveView", "intervalView", "calendarIntervalsView"};
const std::array<const char*, 4> units{"Minutes", "Hours", "Days", "Weeks"};

} // namespace

EditingModel::EditingModel(const Machine& machine, const ScheduleSettings& fetched) : _machine(machine)
{
    fetch(fetched);
}

void EditingModel::fetch(const ScheduleSettings& record)
{
    _current = record;
    show();
}

void EditingModel::show()
{
    const bool disabled = _current.boolForKey("Disabled");
    backups = !disabled && _current.boolForKey("Backups");
    snapshots = !disabled && _current.boolForKey("Snapshots");
    suspend = _current.boolForKey("Suspend");
    battery = _current.boolForKey("AllowBattery");
    for (std::size_t i = 0; i < advanced.size(); ++i) {
        advanced[i] = _current.boolForKey(advancedKeys[i]);
        _showsAdvanced = _showsAdvanced || advanced[i];
    }
    if (const Dictionary* times = _current.dictionaryForKey("SuspendSettings")) {
        const auto time = [times](const char* hour, const char* minute) {
            return TimeOfDay{static_cast<int>(times->integerForKey(hour)),
                             static_cast<int>(times->integerForKey(minute))};
        };
        setTimes(time("StartHour", "StartMinute"), time("EndHour", "EndMinute"));
    }
    const std::string* mode = _current.stringForKey("BackupsMode");
    _mode = mode && *mode == modes[1] ? 1 : mode && *mode == modes[2] ? 2 : 0;
    if (_intervalEditor.exists)
        keep(_intervalEditor, modes[1]);
    if (_intervalEditor.wasShown)
        showInterval();
    if (_calendarEditor.exists)
        keep(_calendarEditor, modes[2]);
    if (_calendarEditor.wasShown)
        showCalendar();
    createEditor();
    layOut();
}

void EditingModel::createEditor()
{
    if (_mode == 0)
        _hasWhenInactiveEditor = true;
    if (_mode == 1 && !_intervalEditor.exists)
        keep(_intervalEditor, modes[1]);
    if (_mode == 2 && !_calendarEditor.exists)
        keep(_calendarEditor, modes[2]);
}

void EditingModel::keep(Editor& editor, const char* key) const
{
    editor.exists = true;
    const Dictionary* settings = _current.dictionaryForKey(key);
    editor.kept = settings ? std::optional(*settings) : std::nullopt;
}

void EditingModel::layOut()
{
    if (backups && _mode == 1 && !std::exchange(_intervalEditor.wasShown, true))
        showInterval();
    if (backups && _mode == 2 && !std::exchange(_calendarEditor.wasShown, true))
        showCalendar();
}

void EditingModel::showCalendar()
{
    _calendarRows.clear();
    asap = _calendarEditor.kept && _calendarEditor.kept->boolForKey("ASAP");
    const auto* entries = _calendarEditor.kept ? _calendarEditor.kept->arrayForKey("Intervals") : nullptr;
    for (const platform::PropertyList& value : entries ? *entries : platform::Array()) {
        const Dictionary* entry = value.dictionary();
        const auto has = [entry](const char* key) { return entry->find(key) && entry->find(key)->isNumber(); };
        if (!entry || has("Day") || (!has("Weekday") && !has("Hour")))
            continue;
        const std::int64_t weekday = entry->integerForKey("Weekday");
        const bool exists = weekday >= -1 && weekday <= 7;
        CalendarRow row;
        row.weekday = !has("Weekday") ? 0 : !exists ? -1 : weekday == 0 ? 8 : static_cast<int>(weekday) + 1;
        // Small numbers only: those that no calendar can count have a test of their own.
        const std::int64_t minutes = entry->integerForKey("Hour") * 60 + entry->integerForKey("Minute") + 1'440'000;
        row.time = {static_cast<int>(minutes / 60 % 24), static_cast<int>(minutes % 60)};
        _calendarRows.push_back(row);
    }
    if (_calendarRows.empty())
        _calendarRows.push_back({0, scripted::calendar::usualTime});
}

Dictionary EditingModel::calendar()
{
    if (!std::exchange(_calendarEditor.wasShown, true))
        showCalendar();
    platform::Array entries;
    for (const CalendarRow& row : _calendarRows) {
        Dictionary entry;
        if (row.weekday != 0)
            entry.set("Weekday", row.weekday - 1);
        entry.set("Hour", row.time.hour);
        entry.set("Minute", row.time.minute);
        entries.emplace_back(std::move(entry));
    }
    return {{"Intervals", std::move(entries)}, {"ASAP", asap}};
}

void EditingModel::addRow(std::size_t below)
{
    const auto place = _calendarRows.begin() + static_cast<std::ptrdiff_t>(below) + 1;
    _calendarRows.insert(place, {0, scripted::calendar::usualTime});
}

void EditingModel::removeRow(std::size_t row)
{
    _calendarRows.erase(_calendarRows.begin() + static_cast<std::ptrdiff_t>(row));
}

void EditingModel::showInterval()
{
    _unit = 0;
    std::int64_t count = 0;
    for (int unit = 3; unit >= 0; --unit) {
        const auto* value =
            _intervalEditor.kept ? _intervalEditor.kept->find(units[static_cast<std::size_t>(unit)]) : nullptr;
        if (value && value->isNumber()) {
            _unit = unit;
            count = value->integerValue();
            break;
        }
    }
    setCount(count);
}

void EditingModel::setCount(std::int64_t count)
{
    _count = std::clamp<std::int64_t>(count, 1, 999);
}

void EditingModel::setTimes(TimeOfDay from, TimeOfDay to)
{
    _from = from;
    _to = to;
}

void EditingModel::toggleBackups()
{
    backups = !backups;
    layOut();
}

void EditingModel::chooseMode(int mode)
{
    _mode = mode;
    createEditor();
    layOut();
}

void EditingModel::toggleAdvancedSettings()
{
    _showsAdvanced = !_showsAdvanced;
}

bool EditingModel::isAtLeast(std::int64_t minor) const
{
    return _machine.system.major > 10 || _machine.system.minor >= minor;
}

std::array<bool, 3> EditingModel::judgedConditions() const
{
    return {isAtLeast(10), true, isAtLeast(14)};
}

Dictionary EditingModel::interval()
{
    if (!std::exchange(_intervalEditor.wasShown, true))
        showInterval();
    if (_unit == 0 && _count % 60 == 0)
        return {{"Hours", _count / 60}};
    if (_unit == 1 && _count % 24 == 0)
        return {{"Days", _count / 24}};
    return {{units[static_cast<std::size_t>(_unit)], _count}};
}

ScheduleSettings EditingModel::record()
{
    ScheduleSettings record = _current;
    record.remove("Disabled");
    record.set("Backups", backups);
    record.set("BackupsMode", modes[static_cast<std::size_t>(_mode)]);
    if (_hasWhenInactiveEditor)
        record.set("WhenInactive", Dictionary());
    if (_intervalEditor.exists)
        record.set("Interval", interval());
    if (_calendarEditor.exists)
        record.set("CalendarIntervals", calendar());
    record.set("Suspend", suspend);
    record.set("SuspendSettings",
               Dictionary{{"StartHour", _from.hour},
                          {"StartMinute", _from.minute},
                          {"EndHour", _to.hour},
                          {"EndMinute", _to.minute}});
    for (std::size_t i = 0; i < advanced.size(); ++i)
        record.set(advancedKeys[i], _showsAdvanced && judgedConditions()[i] && advanced[i]);
    if (_machine.battery == true)
        record.set("AllowBattery", battery);
    if (isAtLeast(13))
        record.set("Snapshots", snapshots);
    return record;
}

std::vector<std::string> EditingModel::rows() const
{
    std::vector<std::string> rows{"modeStackView"};
    if (backups) {
        rows.push_back(editorViews[static_cast<std::size_t>(_mode)]);
        rows.push_back("suspendStackView");
        if (_machine.battery == true)
            rows.push_back("allowBatteryCheckBox");
        for (std::size_t i = 0; i < advanced.size(); ++i) {
            if (_showsAdvanced && judgedConditions()[i])
                rows.push_back(advancedBoxes[i]);
        }
    }
    if (isAtLeast(13))
        rows.push_back("snapshotsCheckBox");
    return rows;
}
