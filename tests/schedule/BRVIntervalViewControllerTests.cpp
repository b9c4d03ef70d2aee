#include "schedule/BRVIntervalViewController.h"
#include "tests/schedule/WindowControls.h"
#include "tests/shell/support/EditorTest.h"

#include <cstdint>
#include <doctest/doctest.h>
#include <limits>
#include <string>
#include <vector>

using platform::Dictionary;

namespace {

// By unit, as this program's own string table has them.
const std::vector<std::string> labels{
    "each so many minutes:", "each so many hours:", "each so many days:", "each so many weeks:"};

ScheduleSettings intervalRecord(const Dictionary& interval)
{
    return {{"Backups", true}, {"BackupsMode", "Interval"}, {"Interval", interval}};
}

} // namespace

TEST_CASE("the interval editor's name is the mode's value")
{
    CHECK(BRVIntervalViewController::create()->name() == "Interval");
}

TEST_CASE("an editor that was never shown loads its controls to say what they would")
{
    const auto editor = BRVIntervalViewController::create();
    const Dictionary minutes{{"Minutes", 180}};
    editor->setSettings(&minutes);
    CHECK_FALSE(editor->isViewLoaded());
    CHECK(editor->settings() == Dictionary{{"Hours", 3}});
    CHECK(editor->isViewLoaded());
    CHECK(BRVIntervalViewController::create()->settings() == Dictionary{{"Minutes", 1}});
}

TEST_CASE("every unit is shown and written through the controls")
{
    const auto editor = BRVIntervalViewController::create();
    for (const char* key : {"Minutes", "Hours", "Days", "Weeks"}) {
        const Dictionary settings{{key, 7}};
        editor->setSettings(&settings);
        CHECK(editor->settings() == settings);
    }
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
    CHECK(editor.user.text("intervalLabel") == labels[1]);
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
    EditorTest editor(intervalRecord({{"Minutes", 7}}));
    CHECK(editor.user.text("intervalLabel") == labels[0]);
    for (const std::size_t unit : {1u, 2u, 3u, 0u}) {
        editor.user.choose("intervalUnitsPopUp", static_cast<int>(unit));
        CHECK(editor.user.text("intervalField") == "7");
        CHECK(editor.user.text("intervalLabel") == labels[unit]);
    }
    editor.user.choose("intervalUnitsPopUp", 3);
    const auto sent = editor.apply();
    REQUIRE(sent);
    CHECK(*sent->dictionaryForKey("Interval") == Dictionary{{"Weeks", 7}});
}

TEST_CASE("the label is asked for anew whenever the unit changes, also when it does not exist")
{
    EditorTest editor(intervalRecord({{"Days", 7}}));
    const auto interval =
        std::dynamic_pointer_cast<BRVIntervalViewController>(editor.controller->intervalViewController());
    for (const unsigned unit : {3u, 0u, 1u}) {
        interval->setIntervalMode(unit);
        CHECK(editor.user.text("intervalLabel") == labels[unit]);
    }
    const auto label = textFieldOnScreen("intervalLabel");
    label->setStringValue("");
    interval->setIntervalMode(4);
    CHECK(label->stringValue() == labels[1]);
    label->setStringValue("");
    interval->changeUnitsPopup();
    CHECK(label->stringValue() == labels[1]);
}

TEST_CASE("the arrows in the count's field are handled, and nothing else")
{
    using platform::ui::TextCommand;
    EditorTest editor(intervalRecord({{"Days", 7}}));
    const auto interval =
        std::dynamic_pointer_cast<BRVIntervalViewController>(editor.controller->intervalViewController());
    const auto field = textFieldOnScreen("intervalField");
    CHECK(interval->doCommand(*field, TextCommand::MoveUp));
    CHECK(interval->intervalValue() == 8);
    CHECK(interval->doCommand(*field, TextCommand::MoveDown));
    CHECK(interval->doCommand(*field, TextCommand::MoveDown));
    CHECK(interval->intervalValue() == 6);
    for (const auto command : {TextCommand::InsertNewline, TextCommand::CancelOperation, TextCommand::Other})
        CHECK_FALSE(interval->doCommand(*field, command));
    CHECK_FALSE(interval->doCommand(*textFieldOnScreen("intervalLabel"), TextCommand::MoveUp));
    CHECK_FALSE(interval->doCommand(*textFieldOnScreen("intervalLabel"), TextCommand::MoveDown));
    CHECK(interval->intervalValue() == 6);
}
