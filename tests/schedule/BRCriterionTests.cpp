#include "platform/ui/DatePicker.h"
#include "schedule/BRCriterion.h"
#include "tests/platform/ScriptedCalendar.h"

#include <doctest/doctest.h>
#include <regex>

using namespace platform::ui;

namespace {

std::shared_ptr<View> controlOf(BRCriterion& criterion)
{
    const RuleDisplayValue value = criterion.displayValue();
    REQUIRE(std::holds_alternative<std::shared_ptr<View>>(value));
    return std::get<std::shared_ptr<View>>(value);
}

} // namespace

TEST_CASE("a row's chain has four criteria, of the types 0 to 3, and each keeps its child")
{
    BRCriterion root(CriterionTypeBackUp);
    const auto weekday = root.child();
    REQUIRE(weekday);
    const auto at = weekday->child();
    REQUIRE(at);
    const auto time = at->child();
    REQUIRE(time);
    CHECK(root.type() == 0);
    CHECK(weekday->type() == 1);
    CHECK(at->type() == 2);
    CHECK(time->type() == 3);
    CHECK_FALSE(time->child());
    CHECK(root.child() == weekday);
    CHECK(weekday->child() == at);
    CHECK(at->child() == time);
}

TEST_CASE("a criterion of a type that there is not has no child and shows nothing")
{
    for (const unsigned type : {4U, 1000U, ~0U}) {
        BRCriterion criterion(type);
        CHECK(criterion.type() == type);
        CHECK_FALSE(criterion.child());
        CHECK(std::get<std::string>(criterion.displayValue()).empty());
    }
}

TEST_CASE("the first and the third criterion show texts")
{
    CHECK(std::get<std::string>(BRCriterion(CriterionTypeBackUp).displayValue()) == "Back up");
    CHECK(std::get<std::string>(BRCriterion(CriterionTypeAt).displayValue()) == "at");
}

TEST_CASE("the second criterion shows a pop-up of every day, a separator and the seven weekdays")
{
    BRCriterion criterion(CriterionTypeWeekday);
    const auto popUp = std::dynamic_pointer_cast<PopUpButton>(controlOf(criterion));
    REQUIRE(popUp);
    std::vector<std::string> titles;
    for (int i = 0; i < popUp->numberOfItems(); ++i)
        titles.push_back(popUp->itemTitleAtIndex(i));
    CHECK(titles
          == std::vector<std::string>{"Every Day", "", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday",
                                      "Saturday", "Sunday"});
    CHECK(popUp->indexOfSelectedItem() == 0);
    CHECK(popUp->controlSize() == ControlSize::Small);
    CHECK(popUp->identifier() == "weekdayPopUp");
}

TEST_CASE("the fourth criterion shows a time picker at the time at which it is made")
{
    BRCriterion criterion(CriterionTypeTime);
    scripted::calendar::setCurrentTimeOfDay({23, 59});
    const auto picker = std::dynamic_pointer_cast<DatePicker>(controlOf(criterion));
    scripted::calendar::setCurrentTimeOfDay({0, 1});
    const auto later = std::dynamic_pointer_cast<DatePicker>(controlOf(criterion));
    scripted::calendar::setCurrentTimeOfDay(scripted::calendar::usualTime);
    REQUIRE(picker);
    REQUIRE(later);
    CHECK(picker->timeOfDay() == platform::TimeOfDay{23, 59});
    CHECK(later->timeOfDay() == platform::TimeOfDay{0, 1});
    CHECK(picker->controlSize() == ControlSize::Small);
    CHECK(picker->identifier() == "timePicker");
}

TEST_CASE("every call makes a new control, which the criterion lets go of")
{
    for (const unsigned type : {CriterionTypeWeekday, CriterionTypeTime}) {
        BRCriterion criterion(type);
        auto first = controlOf(criterion);
        const auto second = controlOf(criterion);
        CHECK(first != second);
        const std::weak_ptr<View> weak = first;
        first.reset();
        CHECK(weak.expired());
    }
}

TEST_CASE("choosing in one row's pop-up leaves the other rows' alone")
{
    BRCriterion criterion(CriterionTypeWeekday);
    const auto first = std::dynamic_pointer_cast<PopUpButton>(controlOf(criterion));
    const auto second = std::dynamic_pointer_cast<PopUpButton>(controlOf(criterion));
    first->selectItemAtIndex(8);
    first->setItemTitleAtIndex(2, "Washing day");
    CHECK(second->indexOfSelectedItem() == 0);
    CHECK(second->itemTitleAtIndex(2) == "Monday");
}

TEST_CASE("a criterion describes itself by its class, address and type")
{
    const BRCriterion criterion(CriterionTypeAt);
    CHECK(std::regex_match(criterion.description(), std::regex("<BRCriterion: 0x[0-9a-f]+, type 2>")));
    CHECK(criterion.description() != BRCriterion(CriterionTypeAt).description());
}
