#include "helper/macos/update/CurveField.h"

#include <algorithm>

namespace helper {

namespace {

constexpr int limbBits = 51;
constexpr std::uint64_t limbMask = (std::uint64_t(1) << limbBits) - 1;
constexpr std::uint64_t fold = 19; // 2^255 is 19

// 2 to the power of `bits`, less `less`, which fits into a byte.
constexpr CurveField::Bytes powerOfTwoLess(int bits, int less)
{
    CurveField::Bytes bytes{};
    bytes.fill(0xff);
    bytes.front() = static_cast<std::uint8_t>(256 - less);
    bytes.back() = static_cast<std::uint8_t>((1 << (bits - 248)) - 1);
    return bytes;
}

constexpr auto modulus = powerOfTwoLess(255, 19);
constexpr auto inverseExponent = powerOfTwoLess(255, 21);
constexpr auto rootExponent = powerOfTwoLess(252, 3);           // (modulus - 5) / 8
constexpr auto rootOfMinusOneExponent = powerOfTwoLess(253, 5); // (modulus - 1) / 4

} // namespace

std::optional<CurveField> CurveField::fromBytes(const Bytes& given)
{
    Bytes bytes = given;
    bytes.back() &= 0x7f;
    if (!std::lexicographical_compare(bytes.rbegin(), bytes.rend(), modulus.rbegin(), modulus.rend()))
        return std::nullopt;
    Limbs limbs{};
    for (int bit = 0; bit < 255; ++bit) {
        if ((bytes[bit / 8] >> (bit % 8) & 1) != 0)
            limbs[bit / limbBits] |= std::uint64_t(1) << (bit % limbBits);
    }
    return CurveField(limbs);
}

CurveField::Bytes CurveField::bytes() const
{
    auto limbs = carried(carried(_limbs));
    // Below twice the modulus by now: that it is not below the modulus shows in a carry when 19 is added.
    std::uint64_t carry = fold;
    for (const auto limb : limbs)
        carry = (limb + carry) >> limbBits;
    carry *= fold;
    for (auto& limb : limbs) {
        limb += carry;
        carry = limb >> limbBits;
        limb &= limbMask;
    }
    Bytes bytes{};
    for (int bit = 0; bit < 255; ++bit) {
        if ((limbs[bit / limbBits] >> (bit % limbBits) & 1) != 0)
            bytes[bit / 8] |= static_cast<std::uint8_t>(1 << (bit % 8));
    }
    return bytes;
}

CurveField::Limbs CurveField::carried(Limbs limbs)
{
    std::uint64_t carry = 0;
    for (auto& limb : limbs) {
        limb += carry;
        carry = limb >> limbBits;
        limb &= limbMask;
    }
    limbs[0] += carry * fold;
    return limbs;
}

CurveField CurveField::operator+(const CurveField& other) const
{
    Limbs sum = _limbs;
    for (std::size_t index = 0; index < sum.size(); ++index)
        sum[index] += other._limbs[index];
    return CurveField(carried(sum));
}

CurveField CurveField::operator-(const CurveField& other) const
{
    // Four times the modulus first, so that no limb falls below 0.
    Limbs difference = _limbs;
    for (std::size_t index = 0; index < difference.size(); ++index)
        difference[index] += 4 * (index == 0 ? limbMask + 1 - fold : limbMask) - other._limbs[index];
    return CurveField(carried(difference));
}

CurveField CurveField::operator*(const CurveField& other) const
{
    std::array<__uint128_t, 5> products{};
    for (std::size_t left = 0; left < 5; ++left) {
        for (std::size_t right = 0; right < 5; ++right) {
            const auto product = static_cast<__uint128_t>(_limbs[left]) * other._limbs[right];
            products[(left + right) % 5] += left + right < 5 ? product : product * fold;
        }
    }
    Limbs limbs{};
    __uint128_t carry = 0;
    for (std::size_t index = 0; index < 5; ++index) {
        carry += products[index];
        limbs[index] = static_cast<std::uint64_t>(carry) & limbMask;
        carry >>= limbBits;
    }
    carry = carry * fold + limbs[0];
    limbs[0] = static_cast<std::uint64_t>(carry) & limbMask;
    limbs[1] += static_cast<std::uint64_t>(carry >> limbBits);
    return CurveField(limbs);
}

CurveField CurveField::power(const Bytes& exponent) const
{
    CurveField result(1);
    for (int bit = 255; bit >= 0; --bit) {
        result = result * result;
        if ((exponent[bit / 8] >> (bit % 8) & 1) != 0)
            result = result * *this;
    }
    return result;
}

CurveField CurveField::inverse() const
{
    return power(inverseExponent);
}

std::optional<CurveField> CurveField::squareRootOfQuotient(const CurveField& divisor) const
{
    static const auto rootOfMinusOne = CurveField(2).power(rootOfMinusOneExponent);
    const auto cube = divisor * divisor * divisor;
    const auto root = *this * cube * (*this * cube * cube * divisor).power(rootExponent);
    const auto square = divisor * root * root;
    if (square == *this)
        return root;
    if (square == -*this)
        return root * rootOfMinusOne;
    return std::nullopt;
}

} // namespace helper
