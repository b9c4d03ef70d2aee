#pragma once

#include "platform/ui/DatePicker.h"
#include "schedule/ScheduleSettings.h"
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
    void setTimes(platform::ui::TimeOfDay from, platform::ui::TimeOfDay to);
    void accept(const ScheduleSettings& applied) { _current = applied; }

    bool backups = false;
    bool suspend = false;
    bool battery = false;
    bool snapshots = false;
    std::array<bool, 3> advanced{}; // passive, sleep preventers, no wired network

    const ScheduleSettings& current() const { return _current; }
    std::int64_t count() const { return _count; }
    ScheduleSettings record() const;
    std::vector<std::string> rows() const;

private:
    void createEditor();
    void layOut();
    void showInterval();
    platform::Dictionary interval() const;
    bool isAtLeast(std::int64_t minor) const;
    std::array<bool, 3> judgedConditions() const;

    Machine _machine;
    ScheduleSettings _current;
    int _mode = 0;
    bool _showsAdvanced = false;
    // As the interface file has them.
    platform::ui::TimeOfDay _from{9, 0};
    platform::ui::TimeOfDay _to{17, 0};

    bool _hasWhenInactiveEditor = false;
    bool _hasIntervalEditor = false;
    bool _wasIntervalShown = false;
    std::optional<platform::Dictionary> _keptInterval;
    std::int64_t _count = 1;
    int _unit = 0;
};
