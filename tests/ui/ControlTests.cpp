#include "platform/ui/Button.h"
#include "platform/ui/Interface.h"
#include "tests/platform/ui/User.h"

#include <doctest/doctest.h>

using namespace platform::ui;

namespace {

// An interface whose controls count the actions that they run.
struct Controls {
    explicit Controls(const char* name) : interface(Interface::load(name)) { }

    template <class T>
    std::shared_ptr<T> control(std::string_view identifier)
    {
        const auto found = interface->outlet<T>(identifier);
        found->setAction([this] { ++actions; });
        return found;
    }

    std::unique_ptr<Interface> interface;
    int actions = 0;
};

struct MainWindow : Controls {
    // The rows wait out of sight until the stack view takes them.
    MainWindow() : Controls("MainWindow") { interface->outlet<View>("rowsOutOfSight")->setHidden(false); }
};

struct IntervalView : Controls {
    IntervalView() : Controls("BRVIntervalViewController") { }
};

} // namespace

TEST_CASE("setting a check box does not run its action")
{
    MainWindow window;
    const auto box = window.control<CheckBox>("backupsCheckBox");
    for (const auto state : {CheckState::On, CheckState::Mixed, CheckState::Off}) {
        box->setState(state);
        CHECK(box->state() == state);
    }
    box->setOn(true);
    CHECK(box->isOn());
    CHECK(window.actions == 0);
}

TEST_CASE("clicking a check box flips it and runs its action once")
{
    MainWindow window;
    const auto box = window.control<CheckBox>("backupsCheckBox");
    user::click(*box);
    CHECK(box->state() == CheckState::On);
    user::click(*box);
    CHECK(box->state() == CheckState::Off);
    user::press(*box, user::Key::Space);
    CHECK(box->state() == CheckState::On);
    CHECK(window.actions == 3);
}

TEST_CASE("a mixed check box counts as off and is never made mixed by the user")
{
    MainWindow window;
    const auto box = window.control<CheckBox>("backupsCheckBox");
    box->setState(CheckState::Mixed);
    CHECK_FALSE(box->isOn());
    user::click(*box);
    CHECK(box->state() == CheckState::On);
    for (int i = 0; i < 4; ++i) {
        user::click(*box);
        CHECK(box->state() != CheckState::Mixed);
    }
}

TEST_CASE("clicking a button runs its action, and a new action takes the place of the old one")
{
    MainWindow window;
    const auto button = window.control<Button>("applyButton");
    user::click(*button);
    CHECK(window.actions == 1);
    int others = 0;
    button->setAction([&others] { ++others; });
    user::click(*button);
    CHECK(window.actions == 1);
    CHECK(others == 1);
    button->setAction({});
    user::click(*button);
    CHECK(others == 1);
}

TEST_CASE("an action may replace itself while it runs")
{
    MainWindow window;
    const auto button = window.control<Button>("applyButton");
    std::string heard;
    const auto first = std::make_shared<std::string>("first");
    button->setAction([&heard, &button, first] {
        button->setAction([&heard] { heard += "second"; });
        heard += *first;
    });
    user::click(*button);
    user::click(*button);
    CHECK(heard == "firstsecond");
}

TEST_CASE("a disabled control takes no clicks")
{
    MainWindow window;
    const auto button = window.control<Button>("applyButton");
    button->setEnabled(false);
    CHECK_FALSE(button->isEnabled());
    CHECK_THROWS_AS(user::click(*button), std::logic_error);
    button->setEnabled(true);
    CHECK(button->isEnabled());
}

TEST_CASE("a title is plain text: ampersands in it are shown, and none of the interface file's come back")
{
    MainWindow window;
    const auto button = window.control<Button>("advancedSettingsButton");
    CHECK(button->title() == "Show Advanced Settings");
    for (const auto* const title : {"Hide Advanced Settings", "Nuts & bolts", "Q&A", "&", "", "Vienna & Bern"}) {
        button->setTitle(title);
        CHECK(button->title() == title);
    }
    const auto box = window.control<CheckBox>("suspendCheckBox");
    box->setTitle("Rest & be quiet");
    CHECK(box->title() == "Rest & be quiet");
}

TEST_CASE("setting a pop-up's item does not run its action, and one out of range selects nothing")
{
    MainWindow window;
    const auto popUp = window.control<PopUpButton>("operationModePopUp");
    CHECK(popUp->numberOfItems() == 3);
    popUp->selectItemAtIndex(2);
    CHECK(popUp->indexOfSelectedItem() == 2);
    for (const int index : {3, -1, -2, 1000}) {
        popUp->selectItemAtIndex(1);
        popUp->selectItemAtIndex(index);
        CHECK(popUp->indexOfSelectedItem() == -1);
    }
    CHECK(window.actions == 0);
}

TEST_CASE("choosing in a pop-up selects the item and runs its action once")
{
    IntervalView view;
    const auto popUp = view.control<PopUpButton>("intervalUnitsPopUp");
    popUp->selectItemAtIndex(0);
    user::choose(*popUp, 3);
    CHECK(popUp->indexOfSelectedItem() == 3);
    CHECK(view.actions == 1);
}

TEST_CASE("a pop-up's titles can be replaced without changing the selection")
{
    IntervalView view;
    const auto popUp = view.control<PopUpButton>("intervalUnitsPopUp");
    popUp->selectItemAtIndex(1);
    CHECK(popUp->itemTitleAtIndex(1) == "hours");
    popUp->setItemTitleAtIndex(1, "hour");
    CHECK(popUp->itemTitleAtIndex(1) == "hour");
    CHECK(popUp->itemTitleAtIndex(4).empty());
    CHECK(popUp->itemTitleAtIndex(-1).empty());
    CHECK(popUp->indexOfSelectedItem() == 1);
    CHECK(view.actions == 0);
}

TEST_CASE("a stepper holds what it is given in its range, without running its action")
{
    IntervalView view;
    const auto stepper = view.control<Stepper>("intervalStepper");
    stepper->setIntegerValue(90);
    CHECK(stepper->integerValue() == 90);
    stepper->setIntegerValue(0);
    CHECK(stepper->integerValue() == 1);
    stepper->setIntegerValue(INT64_MAX);
    CHECK(stepper->integerValue() == 999);
    stepper->setIntegerValue(INT64_MIN);
    CHECK(stepper->integerValue() == 1);
    CHECK(view.actions == 0);
}

TEST_CASE("a stepper's arrows and the arrow keys step by one, run the action and stop at the ends")
{
    IntervalView view;
    const auto stepper = view.control<Stepper>("intervalStepper");
    stepper->setIntegerValue(998);
    user::step(*stepper, user::StepDirection::Up);
    CHECK(stepper->integerValue() == 999);
    CHECK(view.actions == 1);
    user::step(*stepper, user::StepDirection::Up);
    CHECK(stepper->integerValue() == 999);
    CHECK(view.actions == 1);
    user::step(*stepper, user::StepDirection::Down);
    user::press(*stepper, user::Key::Down);
    CHECK(stepper->integerValue() == 997);
    CHECK(view.actions == 3);
}

TEST_CASE("a stepper has no field: digits pressed in it change nothing")
{
    IntervalView view;
    const auto stepper = view.control<Stepper>("intervalStepper");
    stepper->setIntegerValue(5);
    user::pressCharacter(*stepper, '7', {});
    user::press(*stepper, user::Key::Backspace);
    CHECK(stepper->integerValue() == 5);
    CHECK(view.actions == 0);
}

TEST_CASE("a time that is set shows without running the action, and one that does not exist changes nothing")
{
    MainWindow window;
    const auto picker = window.control<DatePicker>("suspendFromPicker");
    picker->setTimeOfDay({.hour = 23, .minute = 59});
    CHECK(picker->timeOfDay() == platform::TimeOfDay{.hour = 23, .minute = 59});
    picker->setTimeOfDay({.hour = 0, .minute = 0});
    CHECK(picker->timeOfDay() == platform::TimeOfDay{});
    picker->setTimeOfDay({.hour = 24, .minute = 0});
    picker->setTimeOfDay({.hour = 7, .minute = 60});
    picker->setTimeOfDay({.hour = -1, .minute = 0});
    CHECK(picker->timeOfDay() == platform::TimeOfDay{});
    CHECK(window.actions == 0);
}

TEST_CASE("picking a time runs the action")
{
    MainWindow window;
    const auto picker = window.control<DatePicker>("suspendToPicker");
    user::pick(*picker, {.hour = 18, .minute = 3});
    CHECK(picker->timeOfDay() == platform::TimeOfDay{.hour = 18, .minute = 3});
    CHECK(window.actions > 0);
}

TEST_CASE("a control that is let go of runs no action any more")
{
    int actions = 0;
    std::weak_ptr<int> kept;
    {
        MainWindow window;
        const auto token = std::make_shared<int>();
        kept = token;
        window.interface->outlet<Button>("applyButton")->setAction([token, &actions] { ++actions; });
    }
    user::runEvents();
    CHECK(kept.expired());
    CHECK(actions == 0);
}
