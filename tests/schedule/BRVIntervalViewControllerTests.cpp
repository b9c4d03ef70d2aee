#include "platform/Localization.h"
#include "schedule/BRVIntervalViewController.h"
#include "tests/shell/support/EditorTest.h"

#include <cstdint>
#include <doctest/doctest.h>
#include <limits>
#include <string>
#include <vector>

using platform::Dictionary;

namespace {

// What the editor makes of a sub-record that it has shown.
Dictionary rewritten(const Dictionary& settings)
{
    const auto editor = BRVIntervalViewController::create();
    editor->setSettings(&settings);
    editor->view();
    return editor->settings();
}

// What it makes of a count entered with a unit selected.
Dictionary entered(std::int64_t count, IntervalUnit unit)
{
    const auto editor = BRVIntervalViewController::create();
    editor->view();
    editor->setIntervalMode(unit);
    editor->setIntervalValue(count);
    return editor->settings();
}

ScheduleSettings intervalRecord(const Dictionary& interval)
{
    return {{"Backups", true}, {"BackupsMode", "Interval"}, {"Interval", interval}};
}

} // namespace

TEST_CASE("the interval editor's name is the mode's value")
{
    CHECK(BRVIntervalViewController::create()->name() == "Interval");
}

TEST_CASE("minutes that make whole hours are written as hours, once")
{
    CHECK(entered(60, IntervalUnitMinutes) == Dictionary{{"Hours", 1}});
    CHECK(entered(90, IntervalUnitMinutes) == Dictionary{{"Minutes", 90}});
    CHECK(entered(999, IntervalUnitMinutes) == Dictionary{{"Minutes", 999}});
    CHECK(entered(960, IntervalUnitMinutes) == Dictionary{{"Hours", 16}});
    CHECK(entered(1, IntervalUnitMinutes) == Dictionary{{"Minutes", 1}});
}

TEST_CASE("hours that make whole days are written as days, and days stay days")
{
    CHECK(entered(24, IntervalUnitHours) == Dictionary{{"Days", 1}});
    CHECK(entered(72, IntervalUnitHours) == Dictionary{{"Days", 3}});
    CHECK(entered(984, IntervalUnitHours) == Dictionary{{"Days", 41}});
    CHECK(entered(25, IntervalUnitHours) == Dictionary{{"Hours", 25}});
    CHECK(entered(7, IntervalUnitDays) == Dictionary{{"Days", 7}});
    CHECK(entered(14, IntervalUnitDays) == Dictionary{{"Days", 14}});
    CHECK(entered(60, IntervalUnitWeeks) == Dictionary{{"Weeks", 60}});
}

TEST_CASE("every count that can be entered is written as the rules say, as an integer")
{
    const std::vector<std::string> keys{"Minutes", "Hours", "Days", "Weeks"};
    const std::vector<std::int64_t> folds{60, 24, 0, 0};
    const auto editor = BRVIntervalViewController::create();
    editor->view();
    for (unsigned unit = 0; unit < 4; ++unit) {
        editor->setIntervalMode(unit);
        for (std::int64_t count = 1; count <= 999; ++count) {
            editor->setIntervalValue(count);
            const bool isFolded = folds[unit] != 0 && count % folds[unit] == 0;
            const Dictionary written = editor->settings();
            REQUIRE(written.size() == 1);
            REQUIRE(written.begin()->key == keys[isFolded ? unit + 1 : unit]);
            REQUIRE(written.begin()->value.type() == platform::PropertyList::Type::Integer);
            REQUIRE(written.begin()->value.integerValue() == (isFolded ? count / folds[unit] : count));
        }
    }
}

TEST_CASE("a sub-record that was shown is written back in its normal form")
{
    CHECK(rewritten({{"Minutes", 180}}) == Dictionary{{"Hours", 3}});
    CHECK(rewritten({{"Minutes", 90}}) == Dictionary{{"Minutes", 90}});
    CHECK(rewritten({{"Days", 14}}) == Dictionary{{"Days", 14}});
    CHECK(rewritten({{"Minutes", 0}}) == Dictionary{{"Minutes", 1}});
    CHECK(rewritten({{"Hours", -5}}) == Dictionary{{"Hours", 1}});
    CHECK(rewritten({{"Weeks", 1000}}) == Dictionary{{"Weeks", 999}});
    CHECK(rewritten({{"Days", std::numeric_limits<std::int64_t>::max()}}) == Dictionary{{"Days", 999}});
    CHECK(rewritten({{"Days", std::numeric_limits<std::int64_t>::min()}}) == Dictionary{{"Days", 1}});
    CHECK(rewritten({{"Days", true}}) == Dictionary{{"Days", 1}});
    CHECK(rewritten({{"Hours", 2.9}}) == Dictionary{{"Hours", 2}});
}

TEST_CASE("of several counts the one of the largest unit is shown")
{
    CHECK(rewritten({{"Hours", 48}, {"Days", 5}}) == Dictionary{{"Days", 5}});
    CHECK(rewritten({{"Weeks", 2}, {"Minutes", 5}}) == Dictionary{{"Weeks", 2}});
    CHECK(rewritten({{"Minutes", 5}, {"Hours", 7}}) == Dictionary{{"Hours", 7}});
    CHECK(rewritten({{"Minutes", 5}, {"Hours", 7}, {"Days", 2}, {"Weeks", 1}}) == Dictionary{{"Weeks", 1}});
}

TEST_CASE("a sub-record without a count reads as one minute")
{
    CHECK(rewritten({}) == Dictionary{{"Minutes", 1}});
    CHECK(rewritten({{"Fortnights", 2}}) == Dictionary{{"Minutes", 1}});
    const auto editor = BRVIntervalViewController::create();
    editor->setSettings(nullptr);
    editor->view();
    CHECK(editor->settings() == Dictionary{{"Minutes", 1}});
}

TEST_CASE("a count of another type is as good as absent")
{
    CHECK(rewritten({{"Weeks", "2"}, {"Minutes", 5}}) == Dictionary{{"Minutes", 5}});
    CHECK(rewritten({{"Minutes", "90"}}) == Dictionary{{"Minutes", 1}});
}

TEST_CASE("an editor that was never shown gives back what it was given")
{
    const auto editor = BRVIntervalViewController::create();
    CHECK(editor->settings() == Dictionary{{"Minutes", 1}});
    const Dictionary unnormalised{{"Minutes", 180}};
    editor->setSettings(&unnormalised);
    CHECK(editor->settings() == unnormalised);
    CHECK_FALSE(editor->isViewLoaded());
    editor->setSettings(nullptr);
    CHECK(editor->settings() == Dictionary{{"Minutes", 1}});
}

TEST_CASE("a sub-record given to a shown editor replaces its edits at once")
{
    const auto editor = BRVIntervalViewController::create();
    editor->view();
    editor->setIntervalMode(IntervalUnitDays);
    editor->setIntervalValue(12);
    const Dictionary hours{{"Hours", 5}};
    editor->setSettings(&hours);
    CHECK(editor->intervalMode() == IntervalUnitHours);
    CHECK(editor->intervalValue() == 5);
    editor->setSettings(nullptr);
    CHECK(editor->intervalMode() == IntervalUnitMinutes);
    CHECK(editor->intervalValue() == 1);
}

TEST_CASE("values are held between 1 and 999")
{
    const auto editor = BRVIntervalViewController::create();
    editor->view();
    for (const auto& [given, held] : std::vector<std::pair<std::int64_t, std::int64_t>>{
             {0, 1}, {-3, 1}, {1, 1}, {999, 999}, {1000, 999}, {std::numeric_limits<std::int64_t>::max(), 999}}) {
        editor->setIntervalValue(given);
        CHECK(editor->intervalValue() == held);
    }
}

TEST_CASE("a unit that does not exist leaves the selection")
{
    const auto editor = BRVIntervalViewController::create();
    editor->view();
    editor->setIntervalMode(IntervalUnitDays);
    editor->setIntervalMode(4);
    CHECK(editor->intervalMode() == IntervalUnitDays);
}

TEST_CASE("the stepper, the label and the unit titles show the fetched interval")
{
    EditorTest editor(intervalRecord({{"Hours", 5}}));
    CHECK(editor.user.text("intervalField") == "5");
    CHECK(editor.user.text("intervalLabel") == platform::localizedString("Back up every-hours"));
    CHECK(editor.user.selectedIndex("intervalUnitsPopUp") == 1);
    CHECK(editor.user.stepperValue("intervalStepper") == 5);
    CHECK(editor.user.itemTitles("intervalUnitsPopUp")
          == std::vector<std::string>{"minutes", "hours", "days", "weeks"});
}

TEST_CASE("the unit titles follow the count while it is typed")
{
    const std::vector<std::string> singular{"minute", "hour", "day", "week"};
    const std::vector<std::string> plural{"minutes", "hours", "days", "weeks"};
    EditorTest editor(intervalRecord({{"Days", 1}}));
    CHECK(editor.user.itemTitles("intervalUnitsPopUp") == singular);
    editor.user.replaceText("intervalField", "2");
    CHECK(editor.user.itemTitles("intervalUnitsPopUp") == plural);
    CHECK(editor.user.stepperValue("intervalStepper") == 2);
    editor.user.replaceText("intervalField", "1");
    CHECK(editor.user.itemTitles("intervalUnitsPopUp") == singular);
    editor.user.replaceText("intervalField", "12");
    CHECK(editor.user.itemTitles("intervalUnitsPopUp") == plural);
}

TEST_CASE("what is typed stays as it was typed, and 0 counts as 1")
{
    EditorTest editor(intervalRecord({{"Minutes", 90}}));
    editor.user.replaceText("intervalField", "007");
    CHECK(editor.user.text("intervalField") == "007");
    CHECK(editor.user.stepperValue("intervalStepper") == 7);
    editor.user.replaceText("intervalField", "0");
    CHECK(editor.user.text("intervalField") == "0");
    const auto sent = editor.apply();
    REQUIRE(sent);
    CHECK(*sent->dictionaryForKey("Interval") == Dictionary{{"Minutes", 1}});
}

TEST_CASE("a fetched count of 0 is shown as 1")
{
    EditorTest editor(intervalRecord({{"Minutes", 0}}));
    CHECK(editor.user.text("intervalField") == "1");
}

TEST_CASE("letters, a fourth digit and emptying the field are refused as they are typed")
{
    EditorTest editor(intervalRecord({{"Minutes", 90}}));
    editor.user.type("intervalField", "x-5");
    CHECK(editor.user.text("intervalField") == "905");
    editor.user.type("intervalField", "6");
    CHECK(editor.user.text("intervalField") == "905");
    editor.user.press("intervalField", Key::Backspace);
    editor.user.press("intervalField", Key::Backspace);
    CHECK(editor.user.text("intervalField") == "9");
    editor.user.press("intervalField", Key::Backspace);
    CHECK(editor.user.text("intervalField") == "9");
}

TEST_CASE("the arrow keys step the count and stop at its ends")
{
    EditorTest editor(intervalRecord({{"Days", 998}}));
    editor.user.press("intervalField", Key::Up);
    CHECK(editor.user.text("intervalField") == "999");
    editor.user.press("intervalField", Key::Up);
    CHECK(editor.user.text("intervalField") == "999");
    editor.user.replaceText("intervalField", "2");
    editor.user.press("intervalField", Key::Down);
    CHECK(editor.user.text("intervalField") == "1");
    CHECK(editor.user.itemTitles("intervalUnitsPopUp")[2] == "day");
    editor.user.press("intervalField", Key::Down);
    CHECK(editor.user.text("intervalField") == "1");
    CHECK(editor.user.stepperValue("intervalStepper") == 1);
}

TEST_CASE("the stepper changes the count")
{
    EditorTest editor(intervalRecord({{"Hours", 1}}));
    editor.user.press("intervalStepper", Key::Up);
    CHECK(editor.user.text("intervalField") == "2");
    CHECK(editor.user.itemTitles("intervalUnitsPopUp")[1] == "hours");
    editor.user.press("intervalStepper", Key::Down);
    CHECK(editor.user.text("intervalField") == "1");
}

TEST_CASE("another unit keeps the count and changes the label and the written key")
{
    const std::vector<std::string> labels{"Back up every-minutes", "Back up every-hours", "Back up every-days",
                                          "Back up every-weeks"};
    EditorTest editor(intervalRecord({{"Minutes", 7}}));
    for (const int unit : {1, 2, 3, 0}) {
        editor.user.choose("intervalUnitsPopUp", unit);
        CHECK(editor.user.text("intervalField") == "7");
        CHECK(editor.user.text("intervalLabel") == platform::localizedString(labels[static_cast<std::size_t>(unit)]));
    }
    editor.user.choose("intervalUnitsPopUp", 3);
    const auto sent = editor.apply();
    REQUIRE(sent);
    CHECK(*sent->dictionaryForKey("Interval") == Dictionary{{"Weeks", 7}});
}
