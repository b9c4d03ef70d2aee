#include "schedule/BRVCalendarIntervalViewController.h"
#include "tests/platform/ScriptedCalendar.h"
#include "tests/schedule/RowsUser.h"
#include "tests/shell/support/EditorTest.h"

#include <cstdint>
#include <doctest/doctest.h>
#include <limits>
#include <string>
#include <vector>

using platform::Array;
using platform::Dictionary;
using platform::PropertyList;
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

// What the editor makes of a sub-record that it has shown.
Dictionary rewritten(const Dictionary& settings)
{
    const auto editor = BRVCalendarIntervalViewController::create();
    editor->setSettings(&settings);
    editor->view();
    return editor->settings();
}

Array rewritten(Array intervals)
{
    return *rewritten(calendar(std::move(intervals))).arrayForKey("Intervals");
}

std::vector<std::string> keys(const Dictionary& dictionary)
{
    std::vector<std::string> result;
    for (const auto& entry : dictionary)
        result.push_back(entry.key);
    return result;
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

TEST_CASE("without entries there is one row, every day at the current time")
{
    CHECK(rewritten(Dictionary{}) == calendar({everyDayNow}));
    CHECK(rewritten(Array{}) == Array{everyDayNow});
    CHECK(rewritten(Dictionary{{"Intervals", "daily"}}) == calendar({everyDayNow}));
    const auto editor = BRVCalendarIntervalViewController::create();
    editor->setSettings(nullptr);
    editor->view();
    CHECK(editor->settings() == calendar({everyDayNow}));
}

TEST_CASE("entries that are in order are written back unchanged, in their order, duplicates too")
{
    const Array entries{
        Dictionary{{"Hour", 18}, {"Minute", 0}},
        Dictionary{{"Hour", 9}, {"Minute", 0}},
        Dictionary{{"Weekday", 3}, {"Hour", 14}, {"Minute", 5}},
        Dictionary{{"Weekday", 3}, {"Hour", 14}, {"Minute", 5}},
        Dictionary{{"Weekday", 7}, {"Hour", 0}, {"Minute", 0}},
        Dictionary{{"Weekday", 1}, {"Hour", 23}, {"Minute", 59}},
    };
    CHECK(rewritten(entries) == entries);
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

TEST_CASE("Sunday is read as 0 or 7 and written as 7")
{
    const Dictionary sunday{{"Weekday", 7}, {"Hour", 9}, {"Minute", 30}};
    CHECK(rewritten(Array{Dictionary{{"Weekday", 0}, {"Hour", 9}, {"Minute", 30}}}) == Array{sunday});
    CHECK(rewritten(Array{sunday}) == Array{sunday});
    CHECK(rewritten(Array{Dictionary{{"Weekday", false}, {"Hour", 9}, {"Minute", 30}}}) == Array{sunday});
}

TEST_CASE("a missing hour or minute counts as 0")
{
    CHECK(rewritten(Array{Dictionary{{"Hour", 6}}}) == Array{Dictionary{{"Hour", 6}, {"Minute", 0}}});
    CHECK(rewritten(Array{Dictionary{{"Weekday", 2}}})
          == Array{Dictionary{{"Weekday", 2}, {"Hour", 0}, {"Minute", 0}}});
    CHECK(rewritten(Array{Dictionary{{"Weekday", 2}, {"Minute", 30}}})
          == Array{Dictionary{{"Weekday", 2}, {"Hour", 0}, {"Minute", 30}}});
}

TEST_CASE("an entry with a day of the month, or with neither weekday nor hour, is not shown and not written")
{
    const Dictionary shown{{"Hour", 8}, {"Minute", 15}};
    for (const Dictionary& hidden :
         {Dictionary{{"Minute", 30}}, Dictionary{}, Dictionary{{"Day", 1}, {"Hour", 9}},
          Dictionary{{"Day", 0}, {"Weekday", 2}, {"Hour", 9}, {"Minute", 1}}, Dictionary{{"Day", true}, {"Hour", 9}}}) {
        CHECK(rewritten(Array{hidden, shown}) == Array{shown});
        CHECK(rewritten(Array{hidden}) == Array{everyDayNow});
    }
}

TEST_CASE("values of other types read as absent")
{
    CHECK(rewritten(Array{Dictionary{{"Day", "first"}, {"Hour", 9}}}) == Array{Dictionary{{"Hour", 9}, {"Minute", 0}}});
    CHECK(rewritten(Array{Dictionary{{"Weekday", "Monday"}, {"Hour", 9}}})
          == Array{Dictionary{{"Hour", 9}, {"Minute", 0}}});
    CHECK(rewritten(Array{Dictionary{{"Weekday", "Monday"}}}) == Array{everyDayNow});
    CHECK(rewritten(Array{Dictionary{{"Hour", 9}, {"Minute", Array{}}}})
          == Array{Dictionary{{"Hour", 9}, {"Minute", 0}}});
    CHECK(rewritten(Array{PropertyList("noon"), PropertyList(12), PropertyList(Array{})}) == Array{everyDayNow});
    CHECK(rewritten(Array{Dictionary{{"Weekday", true}, {"Hour", 9.9}, {"Minute", 2.5}}})
          == Array{Dictionary{{"Weekday", 1}, {"Hour", 9}, {"Minute", 2}}});
}

TEST_CASE("hours and minutes out of range carry over, as a lenient calendar has it")
{
    struct Case {
        std::int64_t hour, minute;
        TimeOfDay shown;
    };
    for (const Case& each : std::vector<Case>{{99, 0, {3, 0}},
                                              {24, 0, {0, 0}},
                                              {0, 60, {1, 0}},
                                              {-1, 0, {23, 0}},
                                              {10, -1, {9, 59}},
                                              {23, 61, {0, 1}}}) {
        CAPTURE(each.hour);
        CHECK(rewritten(Array{Dictionary{{"Hour", each.hour}, {"Minute", each.minute}}})
              == Array{Dictionary{{"Hour", each.shown.hour}, {"Minute", each.shown.minute}}});
    }
}

TEST_CASE("a time that cannot be counted leaves the row's picker at the current time")
{
    for (const auto& [hour, minute] :
         {std::pair{largest, std::int64_t{0}}, {smallest, smallest}, {largest / 60, largest}})
        CHECK(rewritten(Array{Dictionary{{"Hour", hour}, {"Minute", minute}}}) == Array{everyDayNow});
}

TEST_CASE("a weekday that there is not selects nothing and is written as none, which the scheduler helper refuses")
{
    for (const std::int64_t weekday : {std::int64_t{8}, std::int64_t{100}, std::int64_t{-2}, largest, smallest}) {
        CAPTURE(weekday);
        CHECK(rewritten(Array{Dictionary{{"Weekday", weekday}, {"Hour", 9}, {"Minute", 0}}})
              == Array{Dictionary{{"Weekday", -2}, {"Hour", 9}, {"Minute", 0}}});
    }
}

TEST_CASE("a weekday stands one place further down the pop-up than its number, so that -1 is every day")
{
    CHECK(rewritten(Array{Dictionary{{"Weekday", -1}, {"Hour", 9}, {"Minute", 0}}})
          == Array{Dictionary{{"Hour", 9}, {"Minute", 0}}});
}

TEST_CASE("the sub-record and its entries have their keys in order, with values of their own types")
{
    const Dictionary written = rewritten(calendar(
        {Dictionary{{"Minute", 5}, {"Hour", 4}, {"Weekday", 3}}, Dictionary{{"Minute", 5}, {"Hour", 4}}}, true));
    CHECK(keys(written) == std::vector<std::string>{"Intervals", "ASAP"});
    CHECK(written.find("ASAP")->type() == PropertyList::Type::Boolean);
    const Array& entries = *written.arrayForKey("Intervals");
    CHECK(keys(*entries[0].dictionary()) == std::vector<std::string>{"Weekday", "Hour", "Minute"});
    CHECK(keys(*entries[1].dictionary()) == std::vector<std::string>{"Hour", "Minute"});
    for (const auto& entry : *entries[0].dictionary())
        CHECK(entry.value.type() == PropertyList::Type::Integer);
}

TEST_CASE("the catch-up box is on exactly for a true number")
{
    for (const PropertyList& on : {PropertyList(true), PropertyList(1), PropertyList(0.5), PropertyList(-3)})
        CHECK(rewritten(Dictionary{{"ASAP", on}}).boolForKey("ASAP"));
    for (const PropertyList& off : {PropertyList(false), PropertyList(0), PropertyList("yes"), PropertyList(Array{})})
        CHECK_FALSE(rewritten(Dictionary{{"ASAP", off}}).boolForKey("ASAP"));
    CHECK_FALSE(rewritten(Dictionary{}).boolForKey("ASAP"));
}

TEST_CASE("a calendar editor that was never shown gives back what it was given")
{
    const auto editor = BRVCalendarIntervalViewController::create();
    CHECK(editor->settings() == calendar({}));
    const Dictionary odd{{"Intervals", Array{Dictionary{{"Day", 1}}}}, {"Extra", 1}};
    editor->setSettings(&odd);
    CHECK(editor->settings() == odd);
    CHECK_FALSE(editor->isViewLoaded());
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
