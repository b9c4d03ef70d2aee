#include "schedule/model/IntervalState.h"

#include <doctest/doctest.h>
#include <limits>
#include <string>
#include <vector>

using platform::Dictionary;

namespace {

Dictionary entered(std::int64_t count, IntervalUnit unit)
{
    return IntervalState{unit, count}.record();
}

// What becomes of a sub-record that is shown and written back.
Dictionary rewritten(const Dictionary& record)
{
    return IntervalState::showing(IntervalSchedule::fromRecord(record)).record();
}

} // namespace

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
    for (std::size_t unit = 0; unit < 4; ++unit) {
        for (std::int64_t count = 1; count <= 999; ++count) {
            const bool isFolded = folds[unit] != 0 && count % folds[unit] == 0;
            const Dictionary written = entered(count, static_cast<IntervalUnit>(unit));
            REQUIRE(written.size() == 1);
            REQUIRE((*written.begin()).key == keys[isFolded ? unit + 1 : unit]);
            REQUIRE((*written.begin()).value.type() == platform::PropertyList::Type::Integer);
            REQUIRE((*written.begin()).value.integerValue() == (isFolded ? count / folds[unit] : count));
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
    CHECK(rewritten({{"Weeks", 999}}) == Dictionary{{"Weeks", 999}});
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
    CHECK(IntervalState::showing(IntervalSchedule()) == IntervalState{IntervalUnitMinutes, 1});
    CHECK(rewritten({}) == Dictionary{{"Minutes", 1}});
    CHECK(rewritten({{"Fortnights", 2}}) == Dictionary{{"Minutes", 1}});
}

TEST_CASE("a count of another type is as good as absent")
{
    CHECK(rewritten({{"Weeks", "2"}, {"Minutes", 5}}) == Dictionary{{"Minutes", 5}});
    CHECK(rewritten({{"Minutes", "90"}}) == Dictionary{{"Minutes", 1}});
}

TEST_CASE("an index without a unit counts as minutes")
{
    CHECK(IntervalState::unitForIndex(0) == IntervalUnitMinutes);
    CHECK(IntervalState::unitForIndex(1) == IntervalUnitHours);
    CHECK(IntervalState::unitForIndex(2) == IntervalUnitDays);
    CHECK(IntervalState::unitForIndex(3) == IntervalUnitWeeks);
    CHECK(IntervalState::unitForIndex(-1) == IntervalUnitMinutes);
    CHECK(IntervalState::unitForIndex(4) == IntervalUnitMinutes);
}

TEST_CASE("each unit has a label of its own")
{
    const char* const labels[]{"Back up every-minutes", "Back up every-hours", "Back up every-days",
                               "Back up every-weeks"};
    for (int unit = 0; unit < IntervalState::unitCount; ++unit) {
        CHECK(std::string(IntervalState{static_cast<IntervalUnit>(unit), 1}.label()) == labels[unit]);
        CHECK(std::string(IntervalState{static_cast<IntervalUnit>(unit), 7}.label()) == labels[unit]);
    }
}

TEST_CASE("the unit titles follow the count, not the unit")
{
    using Titles = std::vector<std::string>;
    const auto titles = [](IntervalUnit unit, std::int64_t count) {
        const auto found = IntervalState{unit, count}.unitTitles();
        return Titles(found.begin(), found.end());
    };
    for (const IntervalUnit unit : {IntervalUnitMinutes, IntervalUnitWeeks}) {
        CHECK(titles(unit, 1) == Titles{"minute", "hour", "day", "week"});
        CHECK(titles(unit, 2) == Titles{"minutes", "hours", "days", "weeks"});
        CHECK(titles(unit, 999) == Titles{"minutes", "hours", "days", "weeks"});
    }
}
