#include "platform/PropertyList.h"

#include <cmath>
#include <limits>

namespace platform {

namespace {

// 2^63 and 2^64, the first reals above every integer with and without a sign.
constexpr double integerEnd = 9223372036854775808.0;
constexpr double unsignedEnd = 2 * integerEnd;

std::int64_t truncated(double real)
{
    if (std::isnan(real))
        return 0;
    if (real >= integerEnd)
        return std::numeric_limits<std::int64_t>::max();
    if (real < -integerEnd)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(real);
}

// Exact: a real that an integer would only round to is not equal to it.
bool sameNumber(double real, std::int64_t integer)
{
    return real >= -integerEnd && real < integerEnd && std::trunc(real) == real && truncated(real) == integer;
}

bool sameNumber(double real, std::uint64_t integer)
{
    return real >= integerEnd && real < unsignedEnd && static_cast<std::uint64_t>(real) == integer;
}

bool sameNumber(double left, double right)
{
    return left == right || (std::isnan(left) && std::isnan(right));
}

} // namespace

bool Date::operator==(const Date& other) const
{
    return sameNumber(secondsSinceReferenceDate, other.secondsSinceReferenceDate);
}

bool PropertyList::boolValue() const
{
    if (const double* real = std::get_if<double>(&_value))
        return *real != 0 && !std::isnan(*real);
    return integerValue() != 0;
}

std::int64_t PropertyList::integerValue() const
{
    switch (type()) {
    case Type::Boolean:
        return std::get<bool>(_value) ? 1 : 0;
    case Type::Integer:
        return std::get<std::int64_t>(_value);
    case Type::Unsigned:
        return std::numeric_limits<std::int64_t>::max();
    case Type::Real:
        return truncated(std::get<double>(_value));
    default:
        return 0;
    }
}

double PropertyList::realValue() const
{
    if (const double* real = std::get_if<double>(&_value))
        return *real;
    if (const std::uint64_t* integer = unsignedInteger())
        return static_cast<double>(*integer);
    return static_cast<double>(integerValue());
}

bool PropertyList::operator==(const PropertyList& other) const
{
    if (!isNumber() || !other.isNumber())
        return _value == other._value;
    if (type() == Type::Real && other.type() == Type::Real)
        return sameNumber(realValue(), other.realValue());
    if (other.type() == Type::Real)
        return other == *this;
    if (type() == Type::Real)
        return other.unsignedInteger() ? sameNumber(realValue(), *other.unsignedInteger())
                                       : sameNumber(realValue(), other.integerValue());
    if (unsignedInteger() || other.unsignedInteger())
        return _value == other._value;
    return integerValue() == other.integerValue();
}

} // namespace platform
