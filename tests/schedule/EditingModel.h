#pragma once

#include "platform/ui/DatePicker.h"
#include "protocol/ScheduleSettings.h"
#include "tests/shell/support/EditorTest.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The rules of the editor in their plainest form, without controls: what a person's actions lead to, what they see and
// what is sent.
class EditingModel {
public:
    EditingModel(const Machine& machine, const ScheduleSettings& fetched);

    void fetch(const ScheduleSettings& record); // and show it
    void show();                                // the current record again
    void toggleBackups();
    void chooseMode(int mode);
    void setCount(std::int64_t count);
    void chooseUnit(int unit) { _unit = unit; }
    void toggleAdvancedSettings();
    void setTimes(platform::TimeOfDay from, platform::TimeOfDay to);
    void chooseWeekday(std::size_t row, int index) { _calendarRows[row].weekday = index; }
    void setRowTime(std::size_t row, platform::TimeOfDay time) { _calendarRows[row].time = time; }
    void addRow(std::size_t below);
    void removeRow(std::size_t row);
    void accept(const ScheduleSettings& applied) { _current = applied; }

    bool backups = false;
    bool suspend = false;
    bool battery = false;
    bool snapshots = false;
    bool asap = false;
    std::array<bool, 3> advanced{}; // passive, sleep preventers, no wired network

    const ScheduleSettings& current() const { return _current; }
    std::int64_t count() const { return _count; }
    std::size_t calendarRows() const { return _calendarRows.size(); }
    ScheduleSettings record(); // loads the controls of every editor that exists
    std::vector<std::string> rows() const;

private:
    void createEditor();
    void layOut();
    void showInterval();
    platform::Dictionary interval();
    void showCalendar();
    platform::Dictionary calendar();
    bool isAtLeast(std::int64_t minor) const;
    std::array<bool, 3> judgedConditions() const;

    // A mode's editor is made when the mode is first chosen, and has controls once it was on screen or applied.
    struct Editor {
        bool exists = false;
        bool wasShown = false;
        std::optional<platform::Dictionary> kept;
    };
    struct CalendarRow {
        int weekday = 0; // the pop-up's index
        platform::TimeOfDay time;
    };
    void keep(Editor& editor, const char* key) const;

    Machine _machine;
    ScheduleSettings _current;
    int _mode = 0;
    bool _showsAdvanced = false;
    // As the interface file has them.
    platform::TimeOfDay _from{9, 0};
    platform::TimeOfDay _to{17, 0};

    bool _hasWhenInactiveEditor = false;
    Editor _intervalEditor;
    Editor _calendarEditor;
    std::vector<CalendarRow> _calendarRows;
    std::int64_t _count = 1;
    int _unit = 0;
};
