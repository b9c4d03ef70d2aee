#include "tests/schedule/WindowControls.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/RowsUser.h"

#include <doctest/doctest.h>
#include <string>
#include <vector>

using platform::TimeOfDay;
using Rows = std::vector<std::string>;

namespace {

const std::vector<std::string> advancedConditions{"DontRunWhenPassive", "DontRunWithSleepPreventers",
                                                  "DontRunWhenNotNetworkWired"};

} // namespace

TEST_CASE("the window shows every key of the fetched record")
{
    EditorTest editor(completeRecord());
    CHECK(editor.user.seesWindow());
    CHECK(editor.user.isOn("backupsCheckBox"));
    CHECK(editor.user.isEnabled("operationModePopUp"));
    CHECK(editor.user.selectedIndex("operationModePopUp") == 1);
    CHECK(editor.user.text("intervalField") == "90");
    CHECK(editor.user.isOn("suspendCheckBox"));
    CHECK(editor.user.time("suspendFromPicker") == TimeOfDay{22, 15});
    CHECK(editor.user.time("suspendToPicker") == TimeOfDay{6, 45});
    CHECK(editor.user.isOn("allowBatteryCheckBox"));
    CHECK(editor.user.isOn("snapshotsCheckBox"));
    CHECK(editor.user.text("advancedSettingsButton") == "Show Advanced Settings");
    CHECK(editor.user.rows()
          == Rows{"modeStackView", "intervalView", "suspendStackView", "allowBatteryCheckBox", "snapshotsCheckBox"});
}

TEST_CASE("the controls of a row stand 8 points apart, and none stretches to the window's edge")
{
    const EditorTest editor(completeRecord());
    const auto right = [](const char* control) { return frameOf(control).x + frameOf(control).width; };
    const std::vector<std::vector<const char*>> rows{
        {"backupsCheckBox", "operationModePopUp"},
        {"suspendCheckBox", "suspendFromPicker", "suspendToLabel", "suspendToPicker"}};
    for (const auto& row : rows) {
        CHECK(frameOf(row.front()).x == 0);
        for (std::size_t i = 1; i < row.size(); ++i)
            CHECK(frameOf(row[i]).x == right(row[i - 1]) + 8);
        CHECK(right(row.back()) < frameOf("modeStackView").width - 50);
    }
}

TEST_CASE("an empty record shows backups off, the when-inactive mode and nothing ticked")
{
    EditorTest editor(ScheduleSettings{});
    CHECK_FALSE(editor.user.isOn("backupsCheckBox"));
    CHECK(editor.user.selectedIndex("operationModePopUp") == 0);
    CHECK_FALSE(editor.user.isEnabled("operationModePopUp"));
    CHECK_FALSE(editor.user.isOn("snapshotsCheckBox"));
    CHECK_FALSE(editor.user.sees("advancedSettingsButton"));
    CHECK(editor.user.rows() == Rows{"modeStackView", "snapshotsCheckBox"});
}

TEST_CASE("the calendar mode shows its rows in the mode's place")
{
    EditorTest editor(completeRecordWith("BackupsMode", "CalendarIntervals"));
    CHECK(editor.user.selectedIndex("operationModePopUp") == 2);
    CHECK(editor.user.rows()
          == Rows{"modeStackView", "calendarIntervalsView", "suspendStackView", "allowBatteryCheckBox",
                  "snapshotsCheckBox"});
    CHECK(editor.user.isOn("asapCheckBox"));
    const RowsUser rows;
    CHECK(rows.count() == 1);
    CHECK(rows.weekday(0) == 0);
    CHECK(rows.time(0) == TimeOfDay{9, 30});
}

TEST_CASE("a disabled record shows backups and snapshots off whatever else it says")
{
    EditorTest editor(completeRecordWith("Disabled", true));
    CHECK_FALSE(editor.user.isOn("backupsCheckBox"));
    CHECK_FALSE(editor.user.isEnabled("operationModePopUp"));
    CHECK_FALSE(editor.user.sees("advancedSettingsButton"));
    CHECK_FALSE(editor.user.isOn("snapshotsCheckBox"));
    CHECK(editor.user.rows() == Rows{"modeStackView", "snapshotsCheckBox"});
}

TEST_CASE("without suspension times the pickers keep what they show")
{
    EditorTest editor(completeRecord());
    ScheduleSettings without = completeRecord();
    without.remove("SuspendSettings");
    editor.scheduler.setRecord(without);
    REQUIRE(editor.controller->reloadSettings());
    editor.controller->updateSettings();
    CHECK(editor.user.time("suspendFromPicker") == TimeOfDay{22, 15});
    CHECK(editor.user.time("suspendToPicker") == TimeOfDay{6, 45});
}

TEST_CASE("any advanced condition of the record opens the advanced settings")
{
    for (const std::string& key : advancedConditions) {
        EditorTest editor(completeRecordWith(key, true));
        CHECK(editor.user.text("advancedSettingsButton") == "Hide Advanced Settings");
        CHECK(editor.user.isOn("dontRunWhenPassiveCheckBox") == (key == advancedConditions[0]));
        CHECK(editor.user.isOn("dontRunWithSleepPreventersCheckBox") == (key == advancedConditions[1]));
        CHECK(editor.user.isOn("dontRunWhenNotNetworkWiredCheckBox") == (key == advancedConditions[2]));
        CHECK(editor.user.rows()
              == Rows{"modeStackView", "intervalView", "suspendStackView", "allowBatteryCheckBox",
                      "dontRunWhenPassiveCheckBox", "dontRunWithSleepPreventersCheckBox",
                      "dontRunWhenNotNetworkWiredCheckBox", "snapshotsCheckBox"});
    }
}

TEST_CASE("advanced settings that are shown stay so when the record is shown again")
{
    EditorTest editor(completeRecord());
    editor.user.click("advancedSettingsButton");
    editor.user.clickMenuItem("showCurrentSettingsMenuItem");
    CHECK(editor.user.text("advancedSettingsButton") == "Hide Advanced Settings");
    CHECK(editor.user.sees("dontRunWhenPassiveCheckBox"));
}

TEST_CASE("the advanced button shows and hides the advanced conditions and says what it would do")
{
    EditorTest editor(completeRecord());
    CHECK_FALSE(editor.user.sees("dontRunWhenPassiveCheckBox"));
    editor.user.click("advancedSettingsButton");
    CHECK(editor.user.text("advancedSettingsButton") == "Hide Advanced Settings");
    CHECK(editor.user.sees("dontRunWhenPassiveCheckBox"));
    CHECK(editor.user.sees("dontRunWithSleepPreventersCheckBox"));
    CHECK(editor.user.sees("dontRunWhenNotNetworkWiredCheckBox"));
    editor.user.click("advancedSettingsButton");
    CHECK(editor.user.text("advancedSettingsButton") == "Show Advanced Settings");
    CHECK_FALSE(editor.user.sees("dontRunWhenPassiveCheckBox"));
}

TEST_CASE("advanced conditions that the system cannot judge have no box")
{
    const auto advancedRows = [](const platform::OperatingSystemVersion& version) {
        EditorTest editor(completeRecordWith("DontRunWithSleepPreventers", true), {.system = version});
        Rows rows;
        for (const std::string& row : editor.user.rows()) {
            if (row.starts_with("dontRun"))
                rows.push_back(row);
        }
        return rows;
    };
    const Rows sleepAlone{"dontRunWithSleepPreventersCheckBox"};
    const Rows withPassive{"dontRunWhenPassiveCheckBox", "dontRunWithSleepPreventersCheckBox"};
    const Rows all{"dontRunWhenPassiveCheckBox", "dontRunWithSleepPreventersCheckBox",
                   "dontRunWhenNotNetworkWiredCheckBox"};
    CHECK(advancedRows({10, 9, 5}) == sleepAlone);
    CHECK(advancedRows({10, 10, 0}) == withPassive);
    CHECK(advancedRows({10, 13, 6}) == withPassive);
    CHECK(advancedRows({10, 14, 0}) == all);
    CHECK(advancedRows({11, 0, 0}) == all);
}

TEST_CASE("turning backups off leaves the snapshots box alone on screen, and on brings the rest back")
{
    EditorTest editor(completeRecordWith("DontRunWhenPassive", true));
    const Rows before = editor.user.rows();
    editor.user.click("backupsCheckBox");
    CHECK(editor.user.rows() == Rows{"modeStackView", "snapshotsCheckBox"});
    CHECK_FALSE(editor.user.isEnabled("operationModePopUp"));
    CHECK_FALSE(editor.user.sees("advancedSettingsButton"));
    editor.user.click("backupsCheckBox");
    CHECK(editor.user.rows() == before);
    CHECK(editor.user.isEnabled("operationModePopUp"));
    CHECK(editor.user.sees("advancedSettingsButton"));
}

TEST_CASE("without a battery there is no battery box")
{
    for (const std::optional<bool> battery : {std::optional<bool>(false), std::optional<bool>()}) {
        EditorTest editor(completeRecord(), {.battery = battery});
        CHECK_FALSE(editor.user.sees("allowBatteryCheckBox"));
        CHECK(editor.user.sees("snapshotsCheckBox"));
    }
}

TEST_CASE("without snapshots there is no snapshots box")
{
    EditorTest older(completeRecord(), {.system = {10, 12, 6}});
    CHECK(older.user.sees("allowBatteryCheckBox"));
    CHECK_FALSE(older.user.sees("snapshotsCheckBox"));
    older.user.click("backupsCheckBox");
    CHECK(older.user.rows() == Rows{"modeStackView"});
}

TEST_CASE("choosing a mode shows its editor in the mode's row")
{
    EditorTest editor(completeRecord());
    editor.user.choose("operationModePopUp", 0);
    CHECK(editor.user.sees("whenInactiveView"));
    CHECK_FALSE(editor.user.sees("intervalView"));
    editor.user.choose("operationModePopUp", 2);
    CHECK_FALSE(editor.user.sees("whenInactiveView"));
    CHECK(editor.user.rows()[1] == "calendarIntervalsView");
    editor.user.choose("operationModePopUp", 1);
    CHECK(editor.user.rows()[1] == "intervalView");
}

TEST_CASE("edits of a mode survive a look at another mode")
{
    EditorTest editor(completeRecord());
    editor.user.replaceText("intervalField", "45");
    editor.user.choose("operationModePopUp", 0);
    editor.user.choose("operationModePopUp", 1);
    CHECK(editor.user.text("intervalField") == "45");
}

TEST_CASE("the selected mode's editor is the same however often its mode is chosen, and there is none for no mode")
{
    EditorTest editor(completeRecord());
    const auto interval = editor.controller->viewController();
    CHECK(interval == editor.controller->intervalViewController());
    CHECK(interval->name() == "Interval");
    editor.user.choose("operationModePopUp", 2);
    CHECK(editor.controller->viewController() == editor.controller->calendarIntervalsViewController());
    editor.user.choose("operationModePopUp", 0);
    CHECK(editor.controller->viewController() == editor.controller->whenInactiveViewController());
    editor.user.choose("operationModePopUp", 1);
    CHECK(editor.controller->viewController() == interval);
    selectNothing("operationModePopUp");
    CHECK_FALSE(editor.controller->viewController());
}

TEST_CASE("a mode's editor is filled from the fetched record when it is first shown")
{
    EditorTest editor(completeRecordWith("BackupsMode", "WhenInactive"));
    editor.user.choose("operationModePopUp", 1);
    CHECK(editor.user.text("intervalField") == "90");
}

TEST_CASE("showing the current settings throws every edit away and asks nobody")
{
    EditorTest editor(completeRecord());
    editor.user.replaceText("intervalField", "45");
    editor.user.choose("intervalUnitsPopUp", 2);
    editor.user.click("suspendCheckBox");
    editor.user.pick("suspendFromPicker", {20, 0});
    editor.user.click("snapshotsCheckBox");
    editor.user.click("allowBatteryCheckBox");
    editor.user.choose("operationModePopUp", 0);
    editor.user.click("backupsCheckBox");
    editor.user.clickMenuItem("showCurrentSettingsMenuItem");

    CHECK(editor.user.isOn("backupsCheckBox"));
    CHECK(editor.user.isEnabled("operationModePopUp"));
    CHECK(editor.user.selectedIndex("operationModePopUp") == 1);
    CHECK(editor.user.text("intervalField") == "90");
    CHECK(editor.user.selectedIndex("intervalUnitsPopUp") == 0);
    CHECK(editor.user.isOn("suspendCheckBox"));
    CHECK(editor.user.time("suspendFromPicker") == TimeOfDay{22, 15});
    CHECK(editor.user.isOn("snapshotsCheckBox"));
    CHECK(editor.user.isOn("allowBatteryCheckBox"));
    CHECK(editor.scheduler.fetches() == 1);
    CHECK(editor.scheduler.received().empty());
}
