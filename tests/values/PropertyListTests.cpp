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

TEST_CASE("an integer from 2^63 on is a number of its own, equal to no smaller one and to the real of its value")
{
    constexpr std::uint64_t first = std::uint64_t{1} << 63;
    CHECK(PropertyList(first - 1).type() == PropertyList::Type::Integer);
    CHECK(PropertyList(first - 1) == PropertyList(largest));
    CHECK(PropertyList(first).type() == PropertyList::Type::Unsigned);
    CHECK(PropertyList(first).isNumber());
    CHECK(PropertyList(first) == PropertyList(first));
    CHECK(PropertyList(first) != PropertyList(first + 1));
    CHECK(PropertyList(first) != PropertyList(smallest));
    CHECK(PropertyList(first) != PropertyList(largest));
    CHECK(PropertyList(UINT64_MAX) != PropertyList(-1));
    CHECK(PropertyList(first) == PropertyList(9223372036854775808.0));
    CHECK(PropertyList(9223372036854775808.0) == PropertyList(first));
    CHECK(PropertyList(first + 1) != PropertyList(9223372036854775808.0));
    CHECK(PropertyList(UINT64_MAX) != PropertyList(18446744073709551616.0));
    CHECK(PropertyList(first) != PropertyList(-9223372036854775808.0));
    CHECK(PropertyList(first) != PropertyList(notANumber));
    CHECK(PropertyList(first) != PropertyList(true));
    CHECK(PropertyList(first).boolValue());
    CHECK(PropertyList(first).integerValue() == largest);
    CHECK(PropertyList(UINT64_MAX).realValue() == 18446744073709551616.0);
    CHECK(PropertyList(static_cast<unsigned char>(255)) == PropertyList(255));
}

TEST_CASE("a UID is equal to the UID of its index alone, and no number")
{
    CHECK(PropertyList(platform::UID{1}) == PropertyList(platform::UID{1}));
    CHECK(PropertyList(platform::UID{1}) != PropertyList(platform::UID{2}));
    CHECK(PropertyList(platform::UID{1}) != PropertyList(1));
    CHECK_FALSE(PropertyList(platform::UID{1}).isNumber());
    CHECK(PropertyList(platform::UID{1}).integerValue() == 0);
    CHECK(PropertyList(1).uid() == nullptr);
}

TEST_CASE("a date that is no number equals itself, so that a record with one equals its copy")
{
    CHECK(PropertyList(Date{notANumber}) == PropertyList(Date{notANumber}));
    CHECK(PropertyList(Date{notANumber}) != PropertyList(Date{0}));
    CHECK(PropertyList(Date{-0.0}) == PropertyList(Date{0.0}));
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
    const auto several = [](std::int64_t last) {
        const auto one = std::make_shared<const Error>(Error{"one", 1, {}, nullptr});
        const auto other = std::make_shared<const Error>(Error{"other", last, {}, nullptr});
        return Error{"outer", 1, {}, nullptr, {one, other}};
    };
    CHECK(several(2) == several(2));
    CHECK(several(2) != several(3));
    CHECK(several(2) != Error{"outer", 1, {}, nullptr});
}
