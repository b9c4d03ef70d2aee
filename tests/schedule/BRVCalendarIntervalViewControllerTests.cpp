#include "protocol/ScheduleRanges.h"
#include "schedule/BRVCalendarIntervalViewController.h"
#include "tests/platform/ScriptedCalendar.h"
#include "tests/shell/support/EditorTest.h"
#include "tests/shell/support/RowsUser.h"

#include <cstdint>
#include <doctest/doctest.h>
#include <limits>
#include <string>
#include <vector>

using platform::Array;
using platform::Dictionary;
using platform::TimeOfDay;

namespace {

constexpr std::int64_t largest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t smallest = std::numeric_limits<std::int64_t>::min();

const Dictionary everyDayNow{{"Hour", scripted::calendar::usualTime.hour},
                             {"Minute", scripted::calendar::usualTime.minute}};

Dictionary calendar(Array intervals, bool asap = false)
{
    return {{"Intervals", std::move(intervals)}, {"ASAP", asap}};
}

// What the editor's controls make of the entries.
Array rewritten(Array intervals)
{
    const Dictionary settings = calendar(std::move(intervals));
    const auto editor = BRVCalendarIntervalViewController::create();
    editor->setSettings(&settings);
    return *editor->settings().arrayForKey("Intervals");
}

ScheduleSettings calendarRecord(Array intervals, bool asap = false)
{
    return {{"Backups", true},
            {"BackupsMode", "CalendarIntervals"},
            {"CalendarIntervals", calendar(std::move(intervals), asap)}};
}

Dictionary sentCalendar(EditorTest& editor)
{
    const auto sent = editor.applyAndDismiss();
    REQUIRE(sent);
    REQUIRE(sent->dictionaryForKey("CalendarIntervals"));
    return *sent->dictionaryForKey("CalendarIntervals");
}

} // namespace

TEST_CASE("the calendar editor's name is the mode's value")
{
    CHECK(BRVCalendarIntervalViewController::create()->name() == "CalendarIntervals");
}

TEST_CASE("the rule editor is given one chain of four criteria, with one child each but for the last")
{
    const EditorTest test(calendarRecord({}));
    const auto calendars = std::dynamic_pointer_cast<BRVCalendarIntervalViewController>(
        test.controller->calendarIntervalsViewController());
    REQUIRE(calendars);
    const auto rules = RowsUser().ruleEditor();
    std::shared_ptr<platform::ui::RuleCriterion> criterion;
    for (unsigned type = CriterionTypeBackUp; type <= CriterionTypeTime; ++type) {
        CHECK(calendars->numberOfChildrenForCriterion(*rules, criterion) == 1);
        criterion = calendars->childForCriterion(*rules, 0, criterion);
        REQUIRE(criterion);
        CHECK(std::static_pointer_cast<BRCriterion>(criterion)->type() == type);
    }
    CHECK(calendars->numberOfChildrenForCriterion(*rules, criterion) == 0);
}

TEST_CASE("every weekday and every time of the day is written back as it was read")
{
    Array entries;
    for (int weekday = 1; weekday <= 7; ++weekday) {
        for (int minute = 0; minute < 24 * 60; minute += 7)
            entries.emplace_back(Dictionary{{"Weekday", weekday}, {"Hour", minute / 60}, {"Minute", minute % 60}});
    }
    CHECK(rewritten(entries) == entries);
}

TEST_CASE("a weekday that there is not selects nothing and is written as none, which the scheduler helper refuses")
{
    for (const std::int64_t weekday : {std::int64_t{8}, std::int64_t{100}, std::int64_t{-2}, largest, smallest}) {
        CAPTURE(weekday);
        CHECK(rewritten(Array{Dictionary{{"Weekday", weekday}, {"Hour", 9}, {"Minute", 0}}})
              == Array{Dictionary{{"Weekday", -2}, {"Hour", 9}, {"Minute", 0}}});
    }
}

TEST_CASE("a calendar editor that was never shown loads its controls to say what they would")
{
    const Dictionary odd =
        calendar({Dictionary{{"Day", 1}, {"Hour", 9}}, Dictionary{{"Weekday", 0}, {"Hour", 9}, {"Minute", 30}}}, true);
    const auto editor = BRVCalendarIntervalViewController::create();
    editor->setSettings(&odd);
    CHECK_FALSE(editor->isViewLoaded());
    CHECK(editor->settings() == calendar({Dictionary{{"Weekday", 7}, {"Hour", 9}, {"Minute", 30}}}, true));
    CHECK(BRVCalendarIntervalViewController::create()->settings() == calendar({everyDayNow}));
}

TEST_CASE("a sub-record given to a shown calendar editor replaces its rows at once")
{
    const auto editor = BRVCalendarIntervalViewController::create();
    editor->view();
    const Dictionary first =
        calendar({Dictionary{{"Hour", 1}, {"Minute", 2}}, Dictionary{{"Hour", 3}, {"Minute", 4}}}, true);
    editor->setSettings(&first);
    CHECK(editor->settings() == first);
    const Dictionary second = calendar({Dictionary{{"Weekday", 5}, {"Hour", 6}, {"Minute", 7}}});
    editor->setSettings(&second);
    CHECK(editor->settings() == second);
    editor->setSettings(nullptr);
    CHECK(editor->settings() == calendar({everyDayNow}));
}

TEST_CASE("a rule editor without rows gives an empty list")
{
    EditorTest editor(calendarRecord({Dictionary{{"Hour", 1}, {"Minute", 2}}}));
    RowsUser().ruleEditor()->removeAllRows();
    CHECK(sentCalendar(editor) == calendar({}));
}

TEST_CASE("the rows share one chain of criteria, and each has controls of its own")
{
    EditorTest editor(calendarRecord({Dictionary{{"Hour", 1}}, Dictionary{{"Hour", 2}}}));
    const auto rows = RowsUser().ruleEditor();
    REQUIRE(rows->numberOfRows() == 2);
    REQUIRE(rows->criteriaForRow(0).size() == 4);
    CHECK(rows->criteriaForRow(0) == rows->criteriaForRow(1));
    CHECK(rows->displayValuesForRow(0).size() == 4);
    CHECK(rows->displayValuesForRow(0)[1] != rows->displayValuesForRow(1)[1]);
    CHECK(rows->displayValuesForRow(0)[3] != rows->displayValuesForRow(1)[3]);
}

TEST_CASE("the rows show the fetched entries")
{
    EditorTest editor(calendarRecord(
        {Dictionary{{"Weekday", 3}, {"Hour", 14}, {"Minute", 5}}, Dictionary{{"Hour", 6}}, Dictionary{{"Weekday", 0}}},
        true));
    const RowsUser rows;
    REQUIRE(rows.count() == 3);
    CHECK(rows.weekday(0) == 4);
    CHECK(rows.time(0) == TimeOfDay{14, 5});
    CHECK(rows.weekday(1) == 0);
    CHECK(rows.time(1) == TimeOfDay{6, 0});
    CHECK(rows.weekday(2) == 8);
    CHECK(rows.time(2) == TimeOfDay{0, 0});
    CHECK(editor.user.isOn("asapCheckBox"));
}

TEST_CASE("what a person chooses in the rows is what is sent")
{
    EditorTest editor(calendarRecord({Dictionary{{"Hour", 9}, {"Minute", 0}}}));
    RowsUser rows;
    rows.chooseWeekday(0, 6);
    rows.pickTime(0, {17, 30});
    rows.add(0);
    rows.add(1);
    rows.pickTime(1, {3, 0});
    rows.chooseWeekday(2, 8);
    rows.chooseWeekday(2, 0);
    editor.user.click("asapCheckBox");
    CHECK(sentCalendar(editor)
          == calendar({Dictionary{{"Weekday", 5}, {"Hour", 17}, {"Minute", 30}}, Dictionary{{"Hour", 3}, {"Minute", 0}},
                       everyDayNow},
                      true));
    rows.remove(1);
    rows.remove(0);
    CHECK(rows.count() == 1);
    CHECK_FALSE(rows.canRemove(0));
    CHECK(sentCalendar(editor) == calendar({everyDayNow}, true));
}

TEST_CASE("an added row follows the one whose button was pressed, every day at the current time")
{
    EditorTest editor(
        calendarRecord({Dictionary{{"Weekday", 1}, {"Hour", 1}}, Dictionary{{"Weekday", 2}, {"Hour", 2}}}));
    RowsUser rows;
    scripted::calendar::setCurrentTimeOfDay({20, 15});
    rows.add(0);
    scripted::calendar::setCurrentTimeOfDay(scripted::calendar::usualTime);
    REQUIRE(rows.count() == 3);
    CHECK(rows.weekday(1) == 0);
    CHECK(rows.time(1) == TimeOfDay{20, 15});
    CHECK(rows.weekday(2) == 3);
}

TEST_CASE("a note stands below the rows while there are more than a schedule can hold")
{
    const char* const note = "tooManyTimesLabel";
    Array entries(ScheduleRanges::maximumIntervals, Dictionary{{"Hour", 9}, {"Minute", 0}});
    EditorTest editor(calendarRecord(entries));
    CHECK_FALSE(editor.user.sees(note));
    RowsUser rows;
    rows.add(0);
    CHECK(editor.user.text(note)
          == "A schedule can hold 10,000 times of day. Further ones are left out when you apply.");
    CHECK(sentCalendar(editor).arrayForKey("Intervals")->size() == entries.size());
    rows.remove(0);
    CHECK_FALSE(editor.user.sees(note));

    entries.emplace_back(Dictionary{{"Hour", 10}, {"Minute", 0}});
    editor.scheduler.setRecord(calendarRecord(entries));
    REQUIRE(editor.controller->reloadSettings());
    editor.controller->updateSettings();
    CHECK(editor.user.sees(note));
    CHECK(rows.count() == static_cast<int>(ScheduleRanges::maximumIntervals));
}

TEST_CASE("showing the current settings puts the rows back as they were applied")
{
    EditorTest editor(calendarRecord({Dictionary{{"Hour", 9}, {"Minute", 0}}}));
    RowsUser rows;
    rows.add(0);
    rows.setTime(0, {1, 1});
    editor.user.click("asapCheckBox");
    editor.user.clickMenuItem("showCurrentSettingsMenuItem");
    CHECK(rows.count() == 1);
    CHECK(rows.time(0) == TimeOfDay{9, 0});
    CHECK_FALSE(editor.user.isOn("asapCheckBox"));
}

TEST_CASE("rows that are out of sight are sent as they were fetched and as they were edited")
{
    Array entries;
    for (int i = 0; i < 300; ++i)
        entries.emplace_back(Dictionary{{"Weekday", i % 7 + 1}, {"Hour", i % 24}, {"Minute", i % 60}});
    EditorTest editor(calendarRecord(entries));
    RowsUser rows;
    rows.chooseWeekday(150, 0);
    rows.setTime(150, {4, 44});
    rows.setTime(299, {5, 55});
    CHECK(rows.time(0) == TimeOfDay{0, 0});
    entries[150] = Dictionary{{"Hour", 4}, {"Minute", 44}};
    entries[299] = Dictionary{{"Weekday", 299 % 7 + 1}, {"Hour", 5}, {"Minute", 55}};
    CHECK(*sentCalendar(editor).arrayForKey("Intervals") == entries);
    CHECK(rows.weekday(150) == 0);
    CHECK(rows.time(150) == TimeOfDay{4, 44});
}
