#include "platform/Error.h"

#include <cmath>
#include <doctest/doctest.h>
#include <limits>
#include <memory>

using platform::Array;
using platform::Data;
using platform::Date;
using platform::Dictionary;
using platform::Error;
using platform::PropertyList;

namespace {

constexpr auto largest = std::numeric_limits<std::int64_t>::max();
constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
const double notANumber = std::nan("");

} // namespace

TEST_CASE("numbers are equal by value, whatever their types")
{
    CHECK(PropertyList(true) == PropertyList(1));
    CHECK(PropertyList(1) == PropertyList(1.0));
    CHECK(PropertyList(true) == PropertyList(1.0));
    CHECK(PropertyList(false) == PropertyList(0));
    CHECK(PropertyList(-0.0) == PropertyList(0));
    CHECK(PropertyList(1) != PropertyList(1.5));
    CHECK(PropertyList(true) != PropertyList(2));
    CHECK(PropertyList(notANumber) == PropertyList(notANumber));
    CHECK(PropertyList(notANumber) != PropertyList(0));
}

TEST_CASE("a large integer differs from the real that it would be rounded to")
{
    constexpr std::int64_t odd = (std::int64_t{1} << 53) + 1;
    CHECK(PropertyList(odd) != PropertyList(static_cast<double>(odd)));
    CHECK(PropertyList(odd - 1) == PropertyList(static_cast<double>(odd - 1)));
    CHECK(PropertyList(largest) != PropertyList(9223372036854775808.0));
    CHECK(PropertyList(smallest) == PropertyList(-9223372036854775808.0));
    CHECK(PropertyList(largest) != PropertyList(std::numeric_limits<double>::infinity()));
}

TEST_CASE("values of different types that are not numbers differ")
{
    CHECK(PropertyList("1") != PropertyList(1));
    CHECK(PropertyList(Array()) != PropertyList(Dictionary()));
    CHECK(PropertyList("a") != PropertyList(Data{'a'}));
    CHECK(PropertyList(Date{1}) != PropertyList(1));
    CHECK(PropertyList(Date{1}) == PropertyList(Date{1}));
    CHECK(PropertyList(Data{1, 2}) == PropertyList(Data{1, 2}));
}

TEST_CASE("arrays are equal element by element in order")
{
    CHECK(PropertyList(Array{1, "a"}) == PropertyList(Array{true, "a"}));
    CHECK(PropertyList(Array{1, 2}) != PropertyList(Array{2, 1}));
    CHECK(PropertyList(Array{1}) != PropertyList(Array{1, 1}));
}

TEST_CASE("collections are compared at every level, numbers in them by value")
{
    const auto record = [](PropertyList minute) {
        return PropertyList(
            Dictionary{{"CalendarIntervals",
                        Dictionary{{"Intervals",
                                    Array{Dictionary{{"Weekday", 1}, {"Hour", 9}, {"Minute", std::move(minute)}}}}}}});
    };
    CHECK(record(1) == record(true));
    CHECK(record(1) == record(1.0));
    CHECK(record(1) != record(2));
}

TEST_CASE("a value nested 512 deep is compared and copied")
{
    const auto nested = [](int innermost) {
        PropertyList value(innermost);
        for (int i = 0; i < 512; ++i) {
            Array array;
            array.push_back(std::move(value));
            value = PropertyList(std::move(array));
        }
        return value;
    };
    const PropertyList value = nested(1);
    const PropertyList copy = value; // NOLINT: the copy is what is tested
    CHECK(copy == value);
    CHECK(value != nested(2));
}

TEST_CASE("a real reads as an integer cut towards zero and held in range")
{
    CHECK(PropertyList(1.9).integerValue() == 1);
    CHECK(PropertyList(-1.9).integerValue() == -1);
    CHECK(PropertyList(1e300).integerValue() == largest);
    CHECK(PropertyList(-1e300).integerValue() == smallest);
    CHECK(PropertyList(9223372036854775808.0).integerValue() == largest);
    CHECK(PropertyList(notANumber).integerValue() == 0);
    CHECK_FALSE(PropertyList(notANumber).boolValue());
}

TEST_CASE("a value that is no number reads as false and zero")
{
    for (const PropertyList& value :
         {PropertyList("7"), PropertyList(Date{7}), PropertyList(Data{7}), PropertyList(Array{7}), PropertyList()}) {
        CHECK_FALSE(value.boolValue());
        CHECK(value.integerValue() == 0);
        CHECK(value.realValue() == 0);
        CHECK_FALSE(value.isNumber());
    }
}

TEST_CASE("an integer and a boolean read as reals")
{
    CHECK(PropertyList(3).realValue() == 3.0);
    CHECK(PropertyList(true).realValue() == 1.0);
    CHECK(PropertyList(2.5).realValue() == 2.5);
}

TEST_CASE("errors are equal when their domains, codes, user info and underlying errors are")
{
    const auto chain = [](std::int64_t innermost) {
        const auto inner = std::make_shared<const Error>(Error{"inner", innermost, {}, nullptr});
        return Error{"outer", 1, {{"message", 2}}, inner};
    };
    CHECK(chain(3) == chain(3));
    CHECK(chain(3) != chain(4));
    CHECK(chain(3) != Error{"outer", 1, {{"message", 2}}, nullptr});
    CHECK(Error{"a", 1, {}, nullptr} != Error{"b", 1, {}, nullptr});
    CHECK(Error{"a", 1, {}, nullptr} != Error{"a", 2, {}, nullptr});
    CHECK(Error{"a", 1, {{"k", true}}, nullptr} == Error{"a", 1, {{"k", 1}}, nullptr});
}
