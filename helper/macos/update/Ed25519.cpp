#include "helper/macos/update/Ed25519.h"

#include "helper/macos/update/CurveField.h"
#include "helper/update/Cryptography.h"

#include <algorithm>
#include <optional>

namespace helper {

namespace {

using Bytes = CurveField::Bytes;

// The number of points that the base point makes: 2^252 and a little more. The lowest byte first, as everywhere.
constexpr Bytes order{0xed, 0xd3, 0xf5, 0x5c, 0x1a, 0x63, 0x12, 0x58, 0xd6, 0x9c, 0xf7, 0xa2, 0xde, 0xf9, 0xde, 0x14,
                      0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x10};

bool isBelowOrder(const Bytes& number)
{
    return std::lexicographical_compare(number.rbegin(), number.rend(), order.rbegin(), order.rend());
}

// The rest of the division by the order.
Bytes reduced(std::span<const std::uint8_t> number)
{
    Bytes rest{};
    for (std::size_t bit = number.size() * 8; bit-- > 0;) {
        unsigned carry = number[bit / 8] >> (bit % 8) & 1;
        for (auto& byte : rest) {
            carry += 2U * byte;
            byte = static_cast<std::uint8_t>(carry);
            carry >>= 8;
        }
        if (isBelowOrder(rest))
            continue;
        int borrow = 0;
        for (std::size_t index = 0; index < rest.size(); ++index) {
            const int difference = rest[index] - order[index] - borrow;
            borrow = difference < 0 ? 1 : 0;
            rest[index] = static_cast<std::uint8_t>(difference);
        }
    }
    return rest;
}

const CurveField& curveConstant()
{
    static const auto constant = -CurveField(121'665) * CurveField(121'666).inverse();
    return constant;
}

// A point of the curve; x is _x / _z, y is _y / _z, and their product _t / _z.
class Point {
public:
    Point() : _y(1), _z(1) { } // the neutral one
    Point(const CurveField& x, const CurveField& y) : _x(x), _y(y), _z(1), _t(x * y) { }

    static std::optional<Point> fromBytes(const Bytes& bytes)
    {
        const auto y = CurveField::fromBytes(bytes);
        if (!y)
            return std::nullopt;
        const auto square = *y * *y;
        auto x = (square - CurveField(1)).squareRootOfQuotient(curveConstant() * square + CurveField(1));
        const bool wantsOdd = (bytes.back() & 0x80) != 0;
        if (!x || (wantsOdd && *x == CurveField()))
            return std::nullopt;
        return Point(x->isOdd() == wantsOdd ? *x : -*x, *y);
    }

    Bytes bytes() const
    {
        const auto scale = _z.inverse();
        auto bytes = (_y * scale).bytes();
        bytes.back() |= (_x * scale).isOdd() ? 0x80 : 0;
        return bytes;
    }

    // Right for all points, the same one twice among them.
    Point operator+(const Point& other) const
    {
        const auto a = (_y - _x) * (other._y - other._x);
        const auto b = (_y + _x) * (other._y + other._x);
        const auto c = CurveField(2) * curveConstant() * _t * other._t;
        const auto d = CurveField(2) * _z * other._z;
        Point sum;
        sum._x = (b - a) * (d - c);
        sum._y = (d + c) * (b + a);
        sum._z = (d - c) * (d + c);
        sum._t = (b - a) * (b + a);
        return sum;
    }

    Point operator-() const
    {
        Point negative = *this;
        negative._x = -_x;
        negative._t = -_t;
        return negative;
    }

    Point times(const Bytes& number) const
    {
        Point product;
        for (std::size_t bit = number.size() * 8; bit-- > 0;) {
            product = product + product;
            if ((number[bit / 8] >> (bit % 8) & 1) != 0)
                product = product + *this;
        }
        return product;
    }

private:
    CurveField _x;
    CurveField _y;
    CurveField _z;
    CurveField _t;
};

// y is 4/5, and x even.
const Point& basePoint()
{
    static const auto point = *Point::fromBytes((CurveField(4) * CurveField(5).inverse()).bytes());
    return point;
}

} // namespace

bool Ed25519::verifies(const PublicKey& key, std::span<const std::uint8_t> text,
                       std::span<const std::uint8_t, 64> signature)
{
    Bytes commitment{};
    Bytes answer{};
    std::ranges::copy(signature.first<32>(), commitment.begin());
    std::ranges::copy(signature.last<32>(), answer.begin());
    const auto owner = Point::fromBytes(key);
    if (!owner || !isBelowOrder(answer))
        return false;
    SHA512 digest;
    digest.add(commitment);
    digest.add(key);
    digest.add(text);
    const auto challenge = reduced(digest.digest());
    // A commitment that is no point in its one right form is equal to none.
    return (basePoint().times(answer) + (-*owner).times(challenge)).bytes() == commitment;
}

} // namespace helper
